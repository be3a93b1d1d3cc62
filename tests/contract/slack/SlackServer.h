// A small server with the three methods of Slack's Web API that the program calls, over real HTTP
// on loopback, on a thread of its own. It can misbehave in the ways that the network, a proxy or a
// workspace of unusual size can.
//
// The shapes are those of the public documentation of auth.test, users.list and
// conversations.list. What it has heard may be read from the test's thread.
#pragma once

#include <QByteArray>
#include <QThread>
#include <QUrl>
#include <map>
#include <mutex>
#include <vector>

class QTcpSocket;

namespace vemo {

class SlackServer {
 public:
  /// What becomes of an answer on its way.
  enum class Delivery {
    Whole,
    ClosedBeforeAnswer,
    ClosedInHead,
    ClosedInBody,
    HalfAsWhole,  ///< the first half, announced as if it were all
  };

  struct Answer {
    QByteArray body;
    int status = 200;
    Delivery delivery = Delivery::Whole;
  };

  struct Request {
    QByteArray target;
    QByteArray authorization;
  };

  static constexpr auto goodToken = "xoxp-good";

  SlackServer();
  ~SlackServer();
  SlackServer(const SlackServer&) = delete;
  SlackServer& operator=(const SlackServer&) = delete;

  QUrl apiBaseURL() const;

  /// Answers the method, such as "users.list", so from now on, instead of as the API does.
  void answer(const QByteArray& method, Answer answer);

  std::vector<Request> requests() const;

 private:
  void listen();
  void read(QTcpSocket* socket);
  Answer answerTo(const QByteArray& method, const QByteArray& authorization) const;

  QThread m_thread;
  QObject* m_worker;  ///< lives on the server's thread, as all sockets do
  quint16 m_port = 0;

  mutable std::mutex m_mutex;
  std::map<QByteArray, Answer> m_answers;
  std::vector<Request> m_requests;
};

}  // namespace vemo
