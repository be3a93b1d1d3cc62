// Time from the system's clocks, waits on Qt's timers. Needs the main thread's event loop to run.
#pragma once

#include "base/Clock.h"
#include "base/MainThread.h"

namespace vemo {

class QtClock : public Clock {
 public:
  explicit QtClock(MainThread& mainThread) : m_mainThread(mainThread) {}

  WallTime wallTime() const override { return std::chrono::system_clock::now(); }
  MonotonicTime monotonicTime() const override { return std::chrono::steady_clock::now(); }
  Task<SleepEnd> sleep(Duration duration, std::stop_token stop) override;

 private:
  MainThread& m_mainThread;
};

}  // namespace vemo
