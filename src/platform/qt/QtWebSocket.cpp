#include "platform/qt/QtWebSocket.h"

#include <QTimer>
#include <chrono>
#include <utility>

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// How long the far end has for its part of the closing.
constexpr auto closingTime = 2s;

/// Nobody reads what comes in, so that no more of it is kept than a control message takes.
constexpr quint64 maximumIncomingSize = 64 * 1024;

}  // namespace

QtWebSocket::QtWebSocket(MainThread& mainThread, std::unique_ptr<QWebSocket> socket)
    : m_mainThread(mainThread), m_socket(std::move(socket)) {
  m_socket->setMaxAllowedIncomingFrameSize(maximumIncomingSize);
  m_socket->setMaxAllowedIncomingMessageSize(maximumIncomingSize);
  connect(m_socket.get(), &QWebSocket::bytesWritten, this,
          [this](qint64 bytes) { noteWritten(bytes); });
  connect(m_socket.get(), &QWebSocket::disconnected, this, [this] { noteEnd(); });
}

QtWebSocket::~QtWebSocket() {
  m_socket->disconnect(this);
  if (m_socket->state() == QAbstractSocket::ClosingState) {
    // The closing message may still be on its way out; the socket ends itself after it.
    QWebSocket* const socket = m_socket.release();
    connect(socket, &QWebSocket::disconnected, socket, &QObject::deleteLater);
    return;
  }
  m_socket->abort();
}

WebSocket::Sending QtWebSocket::sendBinary(const QByteArray& message) {
  if (!isOpen()) return refuse();
  m_socket->sendBinaryMessage(message);
  return trackLast();
}

WebSocket::Sending QtWebSocket::sendText(const QString& message) {
  if (!isOpen()) return refuse();
  m_socket->sendTextMessage(message);
  return trackLast();
}

void QtWebSocket::close(int code) {
  if (!isOpen()) return;
  QTimer::singleShot(closingTime, m_socket.get(), [socket = m_socket.get()] { socket->abort(); });
  m_socket->close(static_cast<QWebSocketProtocol::CloseCode>(code));
}

bool QtWebSocket::isOpen() const {
  return m_socket->state() == QAbstractSocket::ConnectedState;
}

WebSocket::Sending QtWebSocket::refuse() const {
  const Sending sending(m_mainThread);
  sending.complete(std::unexpected(WebSocketError::NotOpen));
  return sending;
}

/// The message that was queued last ends where the socket's queue ends now.
WebSocket::Sending QtWebSocket::trackLast() {
  const Sending sending(m_mainThread);
  m_pending.push_back({m_written + m_socket->bytesToWrite(), sending});
  if (isOpen())
    noteWritten(0);
  else
    noteEnd();
  return sending;
}

void QtWebSocket::noteWritten(qint64 bytes) {
  m_written += bytes;
  while (!m_pending.empty() && m_pending.front().end <= m_written) {
    m_pending.front().sending.complete({});
    m_pending.pop_front();
  }
}

void QtWebSocket::noteEnd() {
  for (const auto& [end, sending] : std::exchange(m_pending, {}))
    sending.complete(std::unexpected(WebSocketError::ConnectionLost));
}

}  // namespace vemo
