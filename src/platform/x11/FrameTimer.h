// Beats at a display's rate, to the nanosecond and without drift; a beat that comes too late is
// left out. Costs nothing while it stands still. Main thread only.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace vemo {

class FrameTimer {
 public:
  explicit FrameTimer(std::function<void()> onFrame);
  ~FrameTimer();
  FrameTimer(const FrameTimer&) = delete;
  FrameTimer& operator=(const FrameTimer&) = delete;

  /// The first beat comes at once, from the event loop. Running already, it beats on.
  void start();
  void stop();
  void setRate(double beatsPerSecond);

 private:
  void arm();

  std::function<void()> m_onFrame;
  int m_descriptor;
  double m_rate = 60;
  bool m_isRunning = false;
  std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace vemo
