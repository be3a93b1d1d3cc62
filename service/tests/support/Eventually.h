// Waits for a condition that another thread or process brings about.
#pragma once

#include <poll.h>

#include <chrono>
#include <functional>

namespace vemo::service {

/// False when the condition doesn't hold within the limit, which is generous for slow machines.
inline bool eventually(const std::function<bool()>& condition,
                       std::chrono::seconds limit = std::chrono::seconds(60)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    ::poll(nullptr, 0, 1);
  }
  return true;
}

}  // namespace vemo::service
