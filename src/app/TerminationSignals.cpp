#include "app/TerminationSignals.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace vemo {

namespace {

sigset_t terminations() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  return signals;
}

}  // namespace

void TerminationSignals::block() {
  const sigset_t signals = terminations();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

TerminationSignals::TerminationSignals(std::function<void()> onTermination) {
  const sigset_t signals = terminations();
  m_signals = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (m_signals < 0) {
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);  // the system's own way of ending, then
    return;
  }
  m_notifier = std::make_unique<QSocketNotifier>(m_signals, QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated,
                   [this, onTermination = std::move(onTermination)] {
                     signalfd_siginfo information;
                     if (read(m_signals, &information, sizeof information) > 0) onTermination();
                   });
}

TerminationSignals::~TerminationSignals() {
  if (m_signals >= 0) close(m_signals);
}

}  // namespace vemo
