// A real WebSocket server on loopback, on a thread of its own, that keeps what it is sent and can
// be told to treat its connection badly.
//
// Its counters may be read from the test's thread.
#pragma once

#include <QByteArray>
#include <QSslConfiguration>
#include <QThread>
#include <QUrl>
#include <mutex>
#include <optional>
#include <semaphore>
#include <vector>

class QTcpSocket;
class QWebSocket;
class QWebSocketServer;

namespace vemo {

class TestWebSocketServer {
 public:
  /// What it does when a message has arrived whole.
  enum class Manner { Accepts, ClosesOnMessage, RefusesOnMessage, ResetsOnMessage };

  struct Message {
    bool isText;
    QByteArray payload;
    friend bool operator==(const Message&, const Message&) = default;
  };

  explicit TestWebSocketServer(std::optional<QSslConfiguration> tls = {},
                               Manner manner = Manner::Accepts);
  ~TestWebSocketServer();
  TestWebSocketServer(const TestWebSocketServer&) = delete;
  TestWebSocketServer& operator=(const TestWebSocketServer&) = delete;

  QUrl url() const;

  /// Reads nothing from now on, and takes part in no closing, until resume().
  void stall();
  void resume();

  /// Closes what is open in good order, or cuts it.
  void closeAll();
  void resetAll();

  std::vector<Message> messages() const;
  std::vector<int> closeCodes() const;
  int openCount() const;

 private:
  void listen(const std::optional<QSslConfiguration>& tls);
  void take(QWebSocket* socket);
  void received(QWebSocket* socket, Message message);
  void reset();

  const bool m_isTls;
  const Manner m_manner;
  QThread m_thread;
  QObject* m_worker;  ///< lives on the server's thread, as all sockets do
  QWebSocketServer* m_server = nullptr;
  std::vector<QTcpSocket*> m_connections;
  quint16 m_port = 0;
  std::binary_semaphore m_stallEnd{0};
  bool m_isStalled = false;

  mutable std::mutex m_mutex;
  std::vector<Message> m_messages;
  std::vector<int> m_closeCodes;
  int m_openCount = 0;
};

}  // namespace vemo
