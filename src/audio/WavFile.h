// WAV containers around speech-format PCM: a 44-byte header, then the samples.
//
// Pure functions, any thread.
#pragma once

#include <QByteArray>
#include <cstddef>

#include "audio/PcmBuffer.h"

namespace vemo {

inline constexpr std::size_t wavHeaderSize = 44;

/// A self-contained WAV of the `length` bytes of `pcm` from `offset` on.
QByteArray wavFile(const PcmBuffer& pcm, std::size_t offset, std::size_t length);

}  // namespace vemo
