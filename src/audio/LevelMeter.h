// Loudness on the scale that the pill shows and that tells speech from silence.
//
// Pure function, any thread.
#pragma once

#include <span>

#include "audio/SpeechFormat.h"

namespace vemo {

/// The RMS level of the samples, mapped linearly in decibels: -53 dBFS and below read 0, -40 dBFS
/// and above read 1. `samples` must not be empty.
float meterLevel(std::span<const speechFormat::Sample> samples);

}  // namespace vemo
