// What the fuzzers share.
#pragma once

#include <QByteArray>
#include <cstdint>
#include <cstdlib>

namespace vemo {

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

/// Ends the program, as a fuzzer reports it, when a promise is broken.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace vemo
