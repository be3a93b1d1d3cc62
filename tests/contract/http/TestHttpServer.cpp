#include "TestHttpServer.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>

#include "fakes/HttpWire.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 bigBodySize = 100'000'000;

QByteArray reply(int status, const QByteArray& body, const QByteArray& moreHeaders = {}) {
  return httpAnswer(status, body, "Content-Type: text/plain\r\n" + moreHeaders);
}

void reset(QTcpSocket* socket) {
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
             sizeof atOnce);
  socket->abort();
}

/// Keeps the socket's buffer filled until the whole body has gone.
void sendBigBody(QTcpSocket* socket) {
  socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(bigBodySize) +
                "\r\n\r\n");
  auto remaining = std::make_shared<qint64>(bigBodySize);
  const auto sendMore = [socket, remaining] {
    while (*remaining > 0 && socket->bytesToWrite() < 1'000'000) {
      const qint64 count = std::min<qint64>(*remaining, 1'000'000);
      socket->write(QByteArray(count, 'b'));
      *remaining -= count;
    }
  };
  QObject::connect(socket, &QTcpSocket::bytesWritten, socket, sendMore);
  sendMore();
}

void trickle(QTcpSocket* socket) {
  socket->write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
  auto* timer = new QTimer(socket);
  QObject::connect(timer, &QTimer::timeout, socket, [socket] {
    socket->write("t");
    socket->flush();
  });
  timer->start(5);
}

}  // namespace

TestHttpServer::TestHttpServer(Manner manner, std::optional<QSslConfiguration> tls)
    : m_manner(manner), m_isTls(tls.has_value()), m_worker(new QObject) {
  m_worker->moveToThread(&m_thread);
  QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
  m_thread.start();
  QMetaObject::invokeMethod(m_worker, [this, &tls] { listen(tls); }, Qt::BlockingQueuedConnection);
}

TestHttpServer::~TestHttpServer() {
  m_thread.quit();
  m_thread.wait();
}

QUrl TestHttpServer::url(const QString& path) const {
  return QUrl(u"%1://localhost:%2%3"_s.arg(m_isTls ? u"https"_s : u"http"_s).arg(m_port).arg(path));
}

void TestHttpServer::beginReading() {
  QMetaObject::invokeMethod(m_worker, [this] {
    for (QTcpSocket* socket : m_worker->findChildren<QTcpSocket*>()) {
      socket->setReadBufferSize(0);
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
      socket->readAll();
    }
  });
}

std::vector<TestHttpServer::Request> TestHttpServer::requests() const {
  const std::lock_guard lock(m_mutex);
  return m_requests;
}

int TestHttpServer::connectionCount() const {
  const std::lock_guard lock(m_mutex);
  return m_connectionCount;
}

int TestHttpServer::openConnectionCount() const {
  const std::lock_guard lock(m_mutex);
  return m_openConnectionCount;
}

void TestHttpServer::listen(const std::optional<QSslConfiguration>& tls) {
  QTcpServer* server = nullptr;
  if (tls && m_manner == Manner::Answers) {
    auto* tlsServer = new QSslServer(m_worker);
    tlsServer->setSslConfiguration(*tls);
    server = tlsServer;
  } else {
    server = new QTcpServer(m_worker);
  }
  QObject::connect(server, &QTcpServer::pendingConnectionAvailable, server, [this, server] {
    while (QTcpSocket* socket = server->nextPendingConnection()) accept(socket);
  });
  ASSERT_TRUE(server->listen(QHostAddress::LocalHost));
  m_port = server->serverPort();
}

void TestHttpServer::accept(QTcpSocket* socket) {
  {
    const std::lock_guard lock(m_mutex);
    ++m_connectionCount;
    ++m_openConnectionCount;
  }
  QObject::connect(socket, &QTcpSocket::disconnected, socket, [this, socket] {
    const std::lock_guard lock(m_mutex);
    --m_openConnectionCount;
    socket->deleteLater();
  });
  switch (m_manner) {
    case Manner::Answers:
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { read(socket); });
      read(socket);
      break;
    case Manner::ClosesAtOnce:
      socket->close();
      break;
    case Manner::NeverReads:
      socket->setReadBufferSize(1024);
      break;
    case Manner::ResetsOnFirstBytes:
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] { reset(socket); });
      break;
  }
}

void TestHttpServer::read(QTcpSocket* socket) {
  const auto size = httpMessageSize(socket->peek(socket->bytesAvailable()));
  if (!size || socket->bytesAvailable() < *size) return;
  const QByteArray message = socket->read(*size);
  const qsizetype headEnd = message.indexOf("\r\n\r\n");
  const QByteArray head = message.first(headEnd);
  {
    const std::lock_guard lock(m_mutex);
    m_requests.push_back({head, message.sliced(headEnd + 4)});
  }
  const QUrl target = QUrl::fromEncoded(head.split(' ').value(1));
  answer(socket, target.path());
}

void TestHttpServer::answer(QTcpSocket* socket, const QString& path) {
  static const QByteArray halfOfABody = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf.";
  if (path.startsWith(u"/status/"_s)) {
    const int status = path.section(u'/', 2, 2).toInt();
    const QByteArray location = status == 302 ? "Location: /status/200\r\n"_ba : ""_ba;
    const bool isBodiless = status == 204 || status == 304;
    socket->write(
        reply(status, isBodiless ? ""_ba : "body of " + QByteArray::number(status), location));
  } else if (path == u"/cookie"_s) {
    socket->write(reply(200, "ok", "Set-Cookie: a=b\r\nCache-Control: max-age=1000\r\n"));
  } else if (path == u"/unauthorized"_s) {
    socket->write(reply(401, "no", "WWW-Authenticate: Basic realm=\"x\"\r\n"));
  } else if (path == u"/silent-in-body"_s) {
    socket->write(halfOfABody);
  } else if (path == u"/trickle"_s) {
    trickle(socket);
  } else if (path == u"/big"_s) {
    sendBigBody(socket);
  } else if (path == u"/close-before-answer"_s) {
    socket->close();
  } else if (path == u"/reset-before-answer"_s) {
    reset(socket);
  } else if (path == u"/close-in-headers"_s) {
    socket->write("HTTP/1.1 200 OK\r\nContent-Le");
    socket->close();
  } else if (path == u"/close-in-body"_s) {
    socket->write(halfOfABody);
    socket->close();
  } else if (path == u"/close-after-answer"_s) {
    socket->write(reply(200, "bye"));
    socket->close();
  } else if (path == u"/not-http"_s) {
    socket->write("SSH-2.0-Nonsense\r\n\r\n");
    socket->close();
  } else if (path == u"/bad-chunks"_s) {
    socket->write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzzz\r\nnonsense\r\n");
    socket->close();
  } else if (path == u"/close-in-chunks"_s) {
    socket->write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n");
    socket->close();
  } else if (path == u"/bad-gzip"_s) {
    socket->write(reply(200, "this is no gzip", "Content-Encoding: gzip\r\n"));
  } else if (path != u"/never"_s) {
    ADD_FAILURE() << "the test server knows no path " << path.toStdString();
    socket->close();
  }
}

}  // namespace vemo
