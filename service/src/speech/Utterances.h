// Where to cut a long recording for a recogniser that takes one utterance at a time.
#pragma once

#include <cstdint>
#include <span>

namespace vemo::service {

/// The length of the next utterance, at least 1 sample for any samples: all of them up to 20 s,
/// else up to the quietest moment between 10 s and 20 s.
std::size_t utteranceLength(std::span<const std::int16_t> samples);

}  // namespace vemo::service
