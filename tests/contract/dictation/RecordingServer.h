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

namespace vemo {

class RecordingServer {
 public:
  struct Request {
    QByteArray line;
    QList<QByteArray> headers;  ///< "Name: value", in their order
    QByteArray body;

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
    friend bool operator==(const Request&, const Request&) = default;
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
    const QByteArray received = socket->peek(socket->bytesAvailable());
    const qsizetype headEnd = received.indexOf("\r\n\r\n");
    if (headEnd < 0) return;
    Request request;
    qsizetype bodySize = 0;
    for (QByteArray line : received.first(headEnd).split('\n')) {
      if (line.endsWith('\r')) line.chop(1);
      if (line.toLower().startsWith("content-length:")) bodySize = line.mid(15).trimmed().toInt();
      if (request.line.isEmpty())
        request.line = line;
      else
        request.headers.append(line);
    }
    if (received.size() < headEnd + 4 + bodySize) return;
    request.body = socket->read(headEnd + 4 + bodySize).mid(headEnd + 4);
    requests.push_back(request);
    if (statuses.empty()) return;
    const QByteArray body = R"({"status":"ok","transcription":"text"})";
    socket->write("HTTP/1.1 " + QByteArray::number(statuses.front()) +
                  " X\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    statuses.pop_front();
  }

  QTcpServer m_server;
};

}  // namespace vemo
