#include "TestWebSocketServer.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QPointer>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QWebSocket>
#include <QWebSocketServer>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

TestWebSocketServer::TestWebSocketServer(std::optional<QSslConfiguration> tls, Manner manner)
    : m_isTls(tls.has_value()), m_manner(manner), m_worker(new QObject) {
  m_worker->moveToThread(&m_thread);
  QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
  m_thread.start();
  QMetaObject::invokeMethod(m_worker, [this, &tls] { listen(tls); }, Qt::BlockingQueuedConnection);
}

TestWebSocketServer::~TestWebSocketServer() {
  resume();
  m_thread.quit();
  m_thread.wait();
}

QUrl TestWebSocketServer::url() const {
  return QUrl(u"%1://localhost:%2/"_s.arg(m_isTls ? u"wss"_s : u"ws"_s).arg(m_port));
}

void TestWebSocketServer::stall() {
  m_isStalled = true;
  QMetaObject::invokeMethod(m_worker, [this] { m_stallEnd.acquire(); });
}

void TestWebSocketServer::resume() {
  if (std::exchange(m_isStalled, false)) m_stallEnd.release();
}

void TestWebSocketServer::closeAll() {
  QMetaObject::invokeMethod(m_worker, [this] {
    for (QWebSocket* socket : m_worker->findChildren<QWebSocket*>()) socket->close();
  });
}

void TestWebSocketServer::resetAll() {
  QMetaObject::invokeMethod(m_worker, [this] { reset(); });
}

std::vector<TestWebSocketServer::Message> TestWebSocketServer::messages() const {
  const std::lock_guard lock(m_mutex);
  return m_messages;
}

std::vector<int> TestWebSocketServer::closeCodes() const {
  const std::lock_guard lock(m_mutex);
  return m_closeCodes;
}

int TestWebSocketServer::openCount() const {
  const std::lock_guard lock(m_mutex);
  return m_openCount;
}

void TestWebSocketServer::listen(const std::optional<QSslConfiguration>& tls) {
  m_server = new QWebSocketServer(u"test"_s, QWebSocketServer::NonSecureMode, m_worker);
  QObject::connect(m_server, &QWebSocketServer::newConnection, m_server, [this] {
    while (QWebSocket* socket = m_server->nextPendingConnection()) take(socket);
  });
  QTcpServer* listener = nullptr;
  if (tls) {
    auto* secure = new QSslServer(m_worker);
    secure->setSslConfiguration(*tls);
    listener = secure;
  } else {
    listener = new QTcpServer(m_worker);
  }
  QObject::connect(listener, &QTcpServer::pendingConnectionAvailable, listener, [this, listener] {
    while (QTcpSocket* connection = listener->nextPendingConnection()) {
      m_connections.push_back(connection);
      m_server->handleConnection(connection);
    }
  });
  ASSERT_TRUE(listener->listen(QHostAddress::LocalHost));
  m_port = listener->serverPort();
}

void TestWebSocketServer::take(QWebSocket* socket) {
  socket->setParent(m_worker);
  {
    const std::lock_guard lock(m_mutex);
    ++m_openCount;
  }
  QObject::connect(socket, &QWebSocket::disconnected, socket, [this, socket] {
    const std::lock_guard lock(m_mutex);
    --m_openCount;
    m_closeCodes.push_back(socket->closeCode());
    socket->deleteLater();
  });
  QObject::connect(
      socket, &QWebSocket::binaryMessageReceived, socket,
      [this, socket](const QByteArray& payload) { received(socket, {false, payload}); });
  QObject::connect(
      socket, &QWebSocket::textMessageReceived, socket,
      [this, socket](const QString& text) { received(socket, {true, text.toUtf8()}); });
}

void TestWebSocketServer::received(QWebSocket* socket, Message message) {
  {
    const std::lock_guard lock(m_mutex);
    m_messages.push_back(std::move(message));
  }
  switch (m_manner) {
    case Manner::Accepts:
      break;
    case Manner::ClosesOnMessage:
      socket->close();
      break;
    case Manner::RefusesOnMessage:
      socket->close(QWebSocketProtocol::CloseCodePolicyViolated, u"no more"_s);
      break;
    case Manner::ResetsOnMessage:
      reset();
      break;
  }
}

void TestWebSocketServer::reset() {
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  for (QTcpSocket* connection : std::exchange(m_connections, {})) {
    setsockopt(static_cast<int>(connection->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
               sizeof atOnce);
    connection->abort();
  }
}

}  // namespace vemo
