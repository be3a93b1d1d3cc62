// Tells when the machine has woken from sleep, by the notice of logind on the system bus.
//
// Main thread; the bus is waited for on the GioThread. Without a system bus, or without logind on
// it, nothing is ever told. A bus that has been lost is looked for again, at growing intervals that
// come to an end.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "base/MainThread.h"

namespace vemo {

class GioBus;
class GioThread;

class LogindSleep {
 public:
  /// `didWake` is called on the main thread as long as this object lives.
  LogindSleep(GioThread& thread, MainThread& mainThread, std::function<void()> didWake);
  ~LogindSleep();
  LogindSleep(const LogindSleep&) = delete;
  LogindSleep& operator=(const LogindSleep&) = delete;

 private:
  void connect();
  void listen();
  void tryAgain();

  GioThread& m_thread;
  MainThread& m_mainThread;
  const std::shared_ptr<std::function<void()>> m_didWake;

  // On the GioThread.
  std::shared_ptr<LogindSleep*> m_self;  ///< ends with this object what the thread still has to do
  std::unique_ptr<GioBus> m_bus;
  bool m_wasEverOpen = false;
  std::chrono::milliseconds m_nextPause{};
};

}  // namespace vemo
