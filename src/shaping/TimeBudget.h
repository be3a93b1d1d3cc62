// How long a piece of work on the main thread may still take.
//
// A value; main thread.
#pragma once

#include "base/Clock.h"

namespace vemo {

class TimeBudget {
 public:
  TimeBudget(const Clock& clock, Clock::Duration limit)
      : m_clock(&clock), m_end(clock.monotonicTime() + limit) {}

  bool isSpent() const { return m_clock->monotonicTime() >= m_end; }

  /// Half of what is left, counted from now.
  TimeBudget half() const { return {*m_clock, (m_end - m_clock->monotonicTime()) / 2}; }

 private:
  const Clock* m_clock;
  Clock::MonotonicTime m_end;
};

}  // namespace vemo
