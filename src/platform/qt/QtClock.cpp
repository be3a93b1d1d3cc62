#include "platform/qt/QtClock.h"

#include <QTimer>
#include <algorithm>

#include "base/Completion.h"

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// A QTimer counts milliseconds in an int, which overflows after 24 days.
constexpr Clock::Duration longestTimer = 24h * 20;

void startTimer(QTimer& timer, Clock::Duration remaining) {
  const auto interval = std::clamp<Clock::Duration>(remaining, 0ns, longestTimer);
  timer.start(std::chrono::ceil<std::chrono::milliseconds>(interval));
}

}  // namespace

Task<SleepEnd> QtClock::sleep(Duration duration, std::stop_token stop) {
  const Completion<SleepEnd> end(m_mainThread);
  const MonotonicTime deadline = monotonicTime() + duration;
  QTimer timer;
  timer.setSingleShot(true);
  timer.setTimerType(Qt::PreciseTimer);
  // Timers may fire a little early, and a long sleep takes several of them.
  QObject::connect(&timer, &QTimer::timeout, &timer, [&timer, &end, this, deadline] {
    if (const auto remaining = deadline - monotonicTime(); remaining > 0ns)
      startTimer(timer, remaining);
    else
      end.complete(SleepEnd::Elapsed);
  });
  startTimer(timer, duration);
  const std::stop_callback onStop(stop, [&end] { end.complete(SleepEnd::Cancelled); });
  co_return co_await end;
}

}  // namespace vemo
