// Qt's adapter, opened to a server of our own: plain or over TLS.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "TestWebSocketServer.h"
#include "fakes/QtTestLoop.h"
#include "http/TestCertificates.h"
#include "platform/qt/QtMainThread.h"
#include "platform/qt/QtWebSocket.h"

namespace vemo {

enum class Transport { Plain, Tls };

/// One certificate for the whole program, which trusts its authority from then on.
inline QSslConfiguration trustedServer() {
  static const QSslConfiguration configuration = [] {
    TestCertificates certificates;
    certificates.trustTheTrustedOne();
    return certificates.server(QStringLiteral("trusted"), QStringLiteral("localhost"));
  }();
  return configuration;
}

class QtConnection {
 public:
  explicit QtConnection(Transport transport, TestWebSocketServer::Manner manner = {})
      : server(transport == Transport::Tls ? std::optional(trustedServer()) : std::nullopt,
               manner) {
    auto opened = std::make_unique<QWebSocket>();
    opened->open(server.url());
    QtTestLoop::runUntil([&] {
      return opened->state() == QAbstractSocket::ConnectedState && server.openCount() == 1;
    });
    socket = std::make_unique<QtWebSocket>(mainThread, std::move(opened));
  }

 private:
  QtTestLoop m_loop;

 public:
  QtMainThread mainThread;
  TestWebSocketServer server;
  std::unique_ptr<WebSocket> socket;
};

}  // namespace vemo
