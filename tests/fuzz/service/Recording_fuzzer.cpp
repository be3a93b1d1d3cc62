// Uploads: whatever the bytes, the samples lie inside them or the upload is refused with a
// sentence.
#include "speech/Recording.h"

#include <cstdlib>
#include <numeric>

#include "speech/Utterances.h"

using namespace vemo::service;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto recording = Recording::fromWav(std::string(reinterpret_cast<const char*>(data), size));
  if (!recording) {
    if (recording.error().empty()) std::abort();
    return 0;
  }
  const auto samples = recording->samples();
  if (samples.size_bytes() + 44 > size) std::abort();
  volatile std::int64_t sum = std::accumulate(samples.begin(), samples.end(), std::int64_t{0});
  static_cast<void>(sum);
  for (auto rest = samples; !rest.empty();) {
    const auto length = utteranceLength(rest);
    if (length == 0 || length > rest.size()) std::abort();
    rest = rest.subspan(length);
  }
  return 0;
}
