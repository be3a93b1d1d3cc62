#include "storage/StandardOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace vemo {

namespace {

/// While it lives, a write to a pipe without reader fails on this thread without raising SIGPIPE.
class BrokenPipeGuard {
 public:
  BrokenPipeGuard() {
    ::sigemptyset(&m_brokenPipe);
    ::sigaddset(&m_brokenPipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_previousMask);
  }
  ~BrokenPipeGuard() { ::pthread_sigmask(SIG_SETMASK, &m_previousMask, nullptr); }
  BrokenPipeGuard(const BrokenPipeGuard&) = delete;
  BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

  /// Takes back the signal that a failed write has raised.
  void discardSignal() const {
    const timespec noWait{};
    while (::sigtimedwait(&m_brokenPipe, nullptr, &noWait) == -1 && errno == EINTR) {
    }
  }

 private:
  sigset_t m_brokenPipe;
  sigset_t m_previousMask;
};

bool canTakeBytes() {
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  return ::poll(&output, 1, 0) == 1 && output.revents == POLLOUT;
}

}  // namespace

StandardOutput::StandardOutput() : m_isOpen(::fcntl(STDOUT_FILENO, F_GETFD) != -1) {}

void StandardOutput::write(const QByteArray& bytes) const {
  if (!m_isOpen) return;
  const BrokenPipeGuard guard;
  // A pipe that polls as writable takes PIPE_BUF bytes without blocking, but not more.
  for (qsizetype start = 0; start < bytes.size() && canTakeBytes();) {
    const auto length = std::min<qsizetype>(bytes.size() - start, PIPE_BUF);
    const ssize_t written =
        ::write(STDOUT_FILENO, bytes.constData() + start, static_cast<std::size_t>(length));
    if (written == -1 && errno == EPIPE) guard.discardSignal();
    if (written <= 0) return;
    start += written;
  }
}

}  // namespace vemo
