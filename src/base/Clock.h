// Time: what the wall says, what has passed, and waiting.
//
// wallTime() and monotonicTime() may be called from any thread, sleep() on the main thread.
// monotonicTime() doesn't jump with the wall clock and is what intervals are measured with.
#pragma once

#include <chrono>
#include <stop_token>

#include "base/Task.h"

namespace vemo {

enum class SleepEnd { Elapsed, Cancelled };

class Clock {
 public:
  using WallTime = std::chrono::system_clock::time_point;
  using MonotonicTime = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::nanoseconds;

  virtual ~Clock() = default;

  virtual WallTime wallTime() const = 0;
  virtual MonotonicTime monotonicTime() const = 0;

  /// Resumes after `duration`, or as soon as `stop` is requested. A sleep with a stop that was
  /// requested before it began ends as Cancelled, after one turn of the main queue.
  virtual Task<SleepEnd> sleep(Duration duration, std::stop_token stop) = 0;
};

}  // namespace vemo
