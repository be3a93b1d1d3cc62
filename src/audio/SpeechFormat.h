// The one format of everything downstream of the microphone: signed 16-bit little-endian PCM,
// 16,000 samples per second, one channel.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ports/AudioInput.h"

namespace vemo::speechFormat {

using Sample = std::int16_t;

inline constexpr int sampleRate = 16000;
inline constexpr int channels = 1;
inline constexpr std::size_t bytesPerSecond = sampleRate * channels * sizeof(Sample);

inline constexpr AudioFormat audioFormat{sampleRate, channels, SampleType::Int16};

}  // namespace vemo::speechFormat
