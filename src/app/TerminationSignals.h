// SIGTERM, SIGINT and SIGHUP as a call on the main thread.
//
// One at a time; made on the main thread before any other thread starts, so that every thread
// leaves the signals alone.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace vemo {

class TerminationSignals {
 public:
  /// Keeps the signals waiting until somebody asks for them.
  static void block();

  explicit TerminationSignals(std::function<void()> onTermination);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  int m_signals = -1;  ///< a signalfd
  std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace vemo
