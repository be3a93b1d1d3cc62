// An X server of the test's own, to be killed or stopped.
#pragma once

#include <signal.h>
#include <xcb/xtest.h>

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>

#include "contract/x11/EventLoop.h"
#include "platform/x11/X11Connection.h"

namespace vemo {

class PrivateServer {
 public:
  PrivateServer() { launch(); }
  ~PrivateServer() {
    stopAnswering(false);
    kill();
    for (const char* leftOver : {"/tmp/.X11-unix/X%1", "/tmp/.X%1-lock"})
      QFile::remove(QString::fromLatin1(leftOver).arg(m_number));
  }

  const QByteArray& display() const { return m_display; }

  void kill() {
    m_process.kill();
    EventLoop::runUntil([this] { return m_process.state() == QProcess::NotRunning; });
  }
  /// Another server on the same display.
  void restart() { launch(); }

  /// Presses and releases a key by XTest.
  void strikeKey(xcb_keycode_t code) {
    const auto connection = X11Connection::create(m_display);
    if (!connection) return;
    for (const std::uint8_t event : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
      xcb_test_fake_input(connection->xcb(), event, code, 0, connection->root(), 0, 0, 0);
    connection->synchronize();
  }

  /// While stopped, the server takes requests and answers none.
  void stopAnswering(bool isStopped = true) {
    if (m_process.processId() > 0)
      ::kill(static_cast<pid_t>(m_process.processId()), isStopped ? SIGSTOP : SIGCONT);
  }

 private:
  void launch() {
    using namespace Qt::Literals::StringLiterals;
    m_process.start(u"Xvfb"_s, {QString::fromLatin1(m_display), u"-displayfd"_s, u"1"_s,
                                u"-nolisten"_s, u"tcp"_s, u"-screen"_s, u"0"_s, u"640x480x24"_s});
    EventLoop::runUntil([this] { return m_process.canReadLine(); });
    m_process.readLine();
  }

  QProcess m_process;
  /// Far from the lowest free one, which the next server would take while this one is killed.
  const int m_number = QRandomGenerator::global()->bounded(10'000, 50'000);
  const QByteArray m_display = ":" + QByteArray::number(m_number);
};

}  // namespace vemo
