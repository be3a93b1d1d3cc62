// A real HTTP server on loopback, on a thread of its own, that behaves as the path asks:
//
//   /status/N              answers N with the body "body of N"
//   /cookie                answers 200 and sets a cookie
//   /unauthorized          answers 401 and asks for a password
//   /never                 doesn't answer
//   /silent-in-body        sends half of the body, then nothing
//   /trickle               sends a body without end, a byte every few milliseconds
//   /big                   sends a body of 100 MB
//   /close-before-answer   closes the connection instead of answering
//   /reset-before-answer   resets it
//   /close-in-headers      closes it in the middle of the headers
//   /close-in-body         closes it in the middle of the body
//   /close-after-answer    answers 200 as if to keep the connection, and closes it
//   /not-http              answers in another protocol
//   /bad-chunks            announces chunks and sends none that can be read
//   /close-in-chunks       closes it before the last chunk
//   /bad-gzip              announces compression and sends something else
//
// Its counters may be read from the test's thread.
#pragma once

#include <QByteArray>
#include <QSslConfiguration>
#include <QThread>
#include <QUrl>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class QTcpServer;
class QTcpSocket;

namespace vemo {

class TestHttpServer {
 public:
  /// How it treats connections before it has read a request from them.
  enum class Manner { Answers, ClosesAtOnce, NeverReads, ResetsOnFirstBytes };

  struct Request {
    QByteArray head;  ///< up to the empty line
    QByteArray body;
  };

  explicit TestHttpServer(Manner manner = Manner::Answers,
                          std::optional<QSslConfiguration> tls = {});
  ~TestHttpServer();
  TestHttpServer(const TestHttpServer&) = delete;
  TestHttpServer& operator=(const TestHttpServer&) = delete;

  /// On "localhost", with the scheme that it speaks.
  QUrl url(const QString& path) const;

  /// Lets a server that never reads read from now on.
  void beginReading();

  std::vector<Request> requests() const;
  int connectionCount() const;
  int openConnectionCount() const;

 private:
  void listen(const std::optional<QSslConfiguration>& tls);
  void accept(QTcpSocket* socket);
  void read(QTcpSocket* socket);
  void answer(QTcpSocket* socket, const QString& path);

  const Manner m_manner;
  const bool m_isTls;
  QThread m_thread;
  QObject* m_worker;  ///< lives on the server's thread, as all sockets do
  quint16 m_port = 0;

  mutable std::mutex m_mutex;
  std::vector<Request> m_requests;
  int m_connectionCount = 0;
  int m_openConnectionCount = 0;
};

}  // namespace vemo
