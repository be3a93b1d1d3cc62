// How long something is waited for in all, by a clock that is read between the waits. A machine
// that stood still, or a program that was stopped, finds only a slice of that time gone: what it
// waits for stood still, too.
#pragma once

#include <algorithm>
#include <chrono>

namespace vemo {

class WaitLimit {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Milliseconds = std::chrono::milliseconds;

  static constexpr Milliseconds slice{100};

  WaitLimit(Milliseconds limit, Time now) : m_left(limit), m_lastLook(now) {}

  /// How long the next wait may be; nothing once the limit is reached.
  Milliseconds nextWait(Time now) {
    m_left -= std::min<Time::duration>(now - m_lastLook, slice);
    m_lastLook = now;
    return std::clamp(std::chrono::ceil<Milliseconds>(m_left), Milliseconds(0), slice);
  }

 private:
  Time::duration m_left;
  Time m_lastLook;
};

}  // namespace vemo
