#include "speech/Utterances.h"

#include <cstdlib>
#include <limits>
#include <numeric>

#include "speech/Recording.h"

namespace vemo::service {

namespace {

constexpr std::size_t shortest = 10 * sampleRate;
constexpr std::size_t longest = 20 * sampleRate;
/// A pause between words lasts about this long.
constexpr std::size_t pause = sampleRate / 5;

}  // namespace

std::size_t utteranceLength(std::span<const std::int16_t> samples) {
  if (samples.size() <= longest) return samples.size();
  std::size_t best = longest;
  auto quietest = std::numeric_limits<std::int64_t>::max();
  for (std::size_t start = shortest; start + pause <= longest; start += pause) {
    const auto window = samples.subspan(start, pause);
    const auto loudness = std::accumulate(
        window.begin(), window.end(), std::int64_t{0},
        [](std::int64_t sum, std::int16_t sample) { return sum + std::abs(sample); });
    if (loudness < quietest) {
      quietest = loudness;
      best = start + pause / 2;
    }
  }
  return best;
}

}  // namespace vemo::service
