// An X server of the test's own, to be killed or stopped.
#pragma once

#include <signal.h>

#include <QProcess>

#include "contract/x11/EventLoop.h"

namespace vemo {

class PrivateServer {
 public:
  PrivateServer() {
    using namespace Qt::Literals::StringLiterals;
    m_process.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s, u"-screen"_s,
                                u"0"_s, u"640x480x24"_s});
    EventLoop::runUntil([this] { return m_process.canReadLine(); });
    m_display = ":" + m_process.readLine().trimmed();
  }
  ~PrivateServer() {
    stopAnswering(false);
    kill();
  }

  const QByteArray& display() const { return m_display; }

  void kill() {
    m_process.kill();
    EventLoop::runUntil([this] { return m_process.state() == QProcess::NotRunning; });
  }
  /// While stopped, the server takes requests and answers none.
  void stopAnswering(bool isStopped = true) {
    if (m_process.processId() > 0)
      ::kill(static_cast<pid_t>(m_process.processId()), isStopped ? SIGSTOP : SIGCONT);
  }

 private:
  QProcess m_process;
  QByteArray m_display;
};

}  // namespace vemo
