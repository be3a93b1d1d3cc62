// A real HTTP server on loopback that serves releases: files with ranges, and the ill manners of a
// mirror that is broken or means harm. On the test's own event loop.
#pragma once

#include <QHash>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <functional>

#include "fakes/HttpWire.h"

namespace vemo {

class ReleaseServer {
 public:
  enum class Manner {
    Serves,
    IgnoresRanges,  ///< always sends the whole file
    Endless,        ///< never stops sending
    Drips,          ///< a byte at a time
    Breaks,         ///< closes the connection after half of what was asked for
  };

  ReleaseServer() {
    m_server.listen(QHostAddress::LocalHost);
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
      QTcpSocket* socket = m_server.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { read(*socket); });
      QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    });
  }

  QString feedUrl() const {
    return QStringLiteral("http://127.0.0.1:%1/desktop/updates/appcast.xml")
        .arg(m_server.serverPort());
  }

  QHash<QByteArray, QByteArray> files;
  QHash<QByteArray, Manner> manners;                         ///< by a file's name
  QList<QByteArray> asked;                                   ///< "name" or "name bytes=0-9"
  std::function<void(const QByteArray& name)> beforeAnswer;  ///< may be empty

 private:
  void read(QTcpSocket& socket) {
    while (const auto message = takeHttpMessage(socket)) {
      const QByteArray name = message->line.split(' ').at(1).split('/').last();
      QByteArray range;
      for (const QByteArray& header : message->headers)
        if (header.toLower().startsWith("range:")) range = header.mid(6).trimmed();
      asked.append(range.isEmpty() ? name : name + ' ' + range);
      if (beforeAnswer) beforeAnswer(name);
      answer(socket, name, range);
    }
  }

  void answer(QTcpSocket& socket, const QByteArray& name, const QByteArray& range) {
    const Manner manner = manners.value(name, Manner::Serves);
    if (manner == Manner::Endless) return sendEndlessly(socket);
    if (manner == Manner::Drips) return sendDrips(socket);
    if (!files.contains(name)) {
      socket.write(httpAnswer(404, "nothing here"));
      return;
    }
    QByteArray body = files[name];
    int status = 200;
    if (!range.isEmpty() && manner != Manner::IgnoresRanges) {
      const auto bounds = range.mid(6).split('-');
      body = body.mid(bounds[0].toLongLong(), bounds[1].toLongLong() - bounds[0].toLongLong() + 1);
      status = 206;
    }
    const QByteArray answer = httpAnswer(status, body);
    if (manner == Manner::Breaks) {
      socket.write(answer.first(answer.size() / 2));
      socket.disconnectFromHost();
      return;
    }
    socket.write(answer);
  }

  static void sendEndlessly(QTcpSocket& socket) {
    socket.write("HTTP/1.1 200 Whatever\r\n\r\n");
    const auto more = [&socket] {
      if (socket.bytesToWrite() < 1'000'000) socket.write(QByteArray(1'000'000, 'x'));
    };
    QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, more);
    more();
  }

  /// A byte whenever the one before has gone.
  static void sendDrips(QTcpSocket& socket) {
    QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, [&socket] {
      if (socket.bytesToWrite() == 0) socket.write("x");
    });
    socket.write("HTTP/1.1 206 Whatever\r\nContent-Length: 1000000000\r\n\r\n");
  }

  QTcpServer m_server;
};

}  // namespace vemo
