#include "platform/x11/FrameTimer.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdint>

namespace vemo {

FrameTimer::FrameTimer(std::function<void()> onFrame)
    : m_onFrame(std::move(onFrame)),
      m_descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
  if (m_descriptor < 0) return;
  m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
    std::uint64_t beats = 0;
    if (read(m_descriptor, &beats, sizeof beats) == sizeof beats && m_isRunning) m_onFrame();
  });
}

FrameTimer::~FrameTimer() {
  m_notifier.reset();
  if (m_descriptor >= 0) close(m_descriptor);
}

void FrameTimer::start() {
  if (m_isRunning) return;
  m_isRunning = true;
  arm();
}

void FrameTimer::stop() {
  if (!m_isRunning) return;
  m_isRunning = false;
  const itimerspec never{};
  timerfd_settime(m_descriptor, 0, &never, nullptr);
}

void FrameTimer::setRate(double beatsPerSecond) {
  if (m_rate == beatsPerSecond) return;
  m_rate = beatsPerSecond;
  if (m_isRunning) arm();
}

void FrameTimer::arm() {
  const auto nanoseconds = static_cast<long>(1e9 / m_rate);
  const itimerspec beats{.it_interval = {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000},
                         .it_value = {0, 1}};
  timerfd_settime(m_descriptor, 0, &beats, nullptr);
}

}  // namespace vemo
