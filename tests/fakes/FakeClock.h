// A clock that a test moves by hand. advance() drains the main queue before each timer that falls
// due, so two hours pass in a millisecond and in the right order.
#pragma once

#include <map>
#include <optional>

#include "base/Clock.h"
#include "base/Completion.h"
#include "fakes/FakeMainThread.h"

namespace vemo {

class FakeClock : public Clock {
 public:
  explicit FakeClock(FakeMainThread& mainThread) : m_mainThread(mainThread) {}

  WallTime wallTime() const override { return m_wallTime; }
  MonotonicTime monotonicTime() const override { return m_monotonicTime; }

  Task<SleepEnd> sleep(Duration duration, std::stop_token stop) override {
    const Completion<SleepEnd> end(m_mainThread);
    const auto timer = m_timers.emplace(m_monotonicTime + duration, end);
    const Registration registration(*this, timer);
    const std::stop_callback onStop(stop, [&end] { end.complete(SleepEnd::Cancelled); });
    co_return co_await end;
  }

  /// Lets `duration` pass.
  void advance(Duration duration) {
    const MonotonicTime until = m_monotonicTime + duration;
    m_mainThread.drain();
    for (auto due = nextDue(); due && *due <= until; due = nextDue()) {
      moveTo(*due);
      for (auto timer = m_timers.begin(); timer != m_timers.end() && timer->first <= *due; ++timer)
        timer->second.complete(SleepEnd::Elapsed);
      m_mainThread.drain();
    }
    moveTo(until);
  }

  /// The wall clock is set; nothing that was waiting notices.
  void setWallTime(WallTime wallTime) { m_wallTime = wallTime; }

  /// When the next sleep is over.
  std::optional<MonotonicTime> nextDue() const {
    for (const auto& [time, end] : m_timers) {
      if (!end.isComplete()) return time;
    }
    return std::nullopt;
  }

  /// How many sleeps are under way.
  std::size_t sleeperCount() const { return m_timers.size(); }

 private:
  using Timers = std::multimap<MonotonicTime, Completion<SleepEnd>>;

  /// Takes the timer off the clock when the sleeping coroutine ends or is destroyed.
  struct Registration {
    Registration(FakeClock& owner, Timers::iterator entry) : clock(owner), timer(entry) {}
    ~Registration() { clock.m_timers.erase(timer); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    FakeClock& clock;
    Timers::iterator timer;
  };

  void moveTo(MonotonicTime time) {
    if (time <= m_monotonicTime) return;
    m_wallTime += std::chrono::duration_cast<WallTime::duration>(time - m_monotonicTime);
    m_monotonicTime = time;
  }

  FakeMainThread& m_mainThread;
  WallTime m_wallTime{std::chrono::sys_days{std::chrono::year{2026} / 3 / 14}};
  MonotonicTime m_monotonicTime{std::chrono::hours{1}};
  Timers m_timers;
};

}  // namespace vemo
