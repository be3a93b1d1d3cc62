// A server on loopback that keeps each request byte for byte and answers with the statuses that a
// test has queued; with none queued it doesn't answer. Lives on the test's own event loop.
#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <deque>
#include <vector>

#include "fakes/HttpWire.h"

namespace vemo {

class RecordingServer {
 public:
  struct Request : HttpMessage {
    /// The headers that the HTTP library doesn't add by itself.
    QList<QByteArray> ownHeaders() const {
      QList<QByteArray> own;
      for (const QByteArray& header : headers) {
        const QByteArray name = header.first(header.indexOf(':')).toLower();
        static const QList<QByteArray> added{
            "host",      "connection", "content-length", "accept-encoding", "accept-language",
            "user-agent"};
        if (!added.contains(name)) own.append(header);
      }
      return own;
    }
  };

  RecordingServer() {
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
      QTcpSocket* const socket = m_server.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { read(socket); });
    });
    EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost));
  }

  QUrl url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
  }

  std::deque<int> statuses;
  std::vector<Request> requests;

 private:
  void read(QTcpSocket* socket) {
    auto request = takeHttpMessage(*socket);
    if (!request) return;
    requests.push_back({*std::move(request)});
    if (statuses.empty()) return;
    socket->write(httpAnswer(statuses.front(), R"({"status":"ok","transcription":"text"})"));
    statuses.pop_front();
  }

  QTcpServer m_server;
};

}  // namespace vemo
