#include "audio/LevelMeter.h"

#include <algorithm>
#include <cmath>

namespace vemo {

namespace {
constexpr double fullScale = 32767.0;
constexpr double leastRms = 0.0000001;
constexpr double floorDecibels = -53;
constexpr double rangeDecibels = 13;
}  // namespace

float meterLevel(std::span<const speechFormat::Sample> samples) {
  double sum = 0;
  for (const speechFormat::Sample sample : samples) {
    const double value = sample / fullScale;
    sum += value * value;
  }
  const double rms = std::sqrt(sum / static_cast<double>(samples.size()));
  const double decibels = 20 * std::log10(std::max(rms, leastRms));
  return static_cast<float>(std::clamp((decibels - floorDecibels) / rangeDecibels, 0.0, 1.0));
}

}  // namespace vemo
