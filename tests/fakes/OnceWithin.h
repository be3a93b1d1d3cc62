// Holds a call against the time that it promises, on a machine that may be busy or stand still.
#pragma once

#include <chrono>

namespace vemo {

/// Whether the call takes no longer than the limit in one of several tries.
template <typename Call>
bool isOnceWithin(std::chrono::milliseconds limit, Call call, int tries = 5) {
  for (; tries > 0; --tries) {
    const auto start = std::chrono::steady_clock::now();
    call();
    if (std::chrono::steady_clock::now() - start <= limit) return true;
  }
  return false;
}

}  // namespace vemo
