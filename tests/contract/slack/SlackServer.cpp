#include "SlackServer.h"

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto teamAnswer = R"({
    "ok": true, "url": "https://subarachnoid.slack.com/", "team": "Subarachnoid Workspace",
    "user": "grace", "team_id": "T12345678", "user_id": "W12345678"})";

constexpr auto usersAnswer = R"({
    "ok": true,
    "members": [
      {"id": "W012A3CDE", "team_id": "T012AB3C4", "name": "spengler", "deleted": false,
       "color": "9f69e7", "real_name": "Egon Spengler", "tz": "America/Los_Angeles",
       "profile": {"title": "", "real_name": "Egon Spengler", "display_name": "spengler",
                   "fields": {}, "email": "spengler@ghostbusters.example.com"},
       "is_admin": true, "is_bot": false, "updated": 1502138686},
      {"id": "W07QCRPA4", "team_id": "T0G9PQBBK", "name": "glinda", "deleted": false,
       "real_name": "Glinda Southgood",
       "profile": {"display_name": "Glinda the Fairly Good", "status_emoji": ":crystal_ball:"},
       "is_bot": false},
      {"id": "USLACKBOT", "name": "slackbot", "deleted": false, "real_name": "Slackbot",
       "profile": {"display_name": "Slackbot"}, "is_bot": false},
      {"id": "W0GONE", "name": "gone", "deleted": true, "profile": {}}],
    "cache_ts": 1498777272, "response_metadata": {"next_cursor": "dXNlcjpVMEc5V0ZYTlo="}})";

constexpr auto channelsAnswer = R"({
    "ok": true,
    "channels": [
      {"id": "C012AB3CD", "name": "general", "is_channel": true, "is_archived": false,
       "is_private": false, "topic": {"value": "Company-wide announcements"}, "num_members": 4},
      {"id": "C061EG9T2", "name": "design-team", "is_archived": false, "is_private": true},
      {"id": "C0OLD", "name": "old", "is_archived": true, "is_private": false}],
    "response_metadata": {"next_cursor": "dGVhbTpDMDYxRkE1UEI="}})";

QByteArray headerOf(const QByteArray& head, const QByteArray& name) {
  for (const QByteArray& line : head.split('\n')) {
    const auto colon = line.indexOf(':');
    if (colon > 0 && line.first(colon).compare(name, Qt::CaseInsensitive) == 0)
      return line.sliced(colon + 1).trimmed();
  }
  return {};
}

void send(QTcpSocket* socket, const SlackServer::Answer& answer) {
  using Delivery = SlackServer::Delivery;
  const QByteArray half = answer.body.first(answer.body.size() / 2);
  const QByteArray& body = answer.delivery == Delivery::HalfAsWhole ? half : answer.body;
  const QByteArray head = "HTTP/1.1 " + QByteArray::number(answer.status) +
                          " Whatever\r\nContent-Length: " + QByteArray::number(body.size()) +
                          "\r\nContent-Type: application/json\r\n\r\n";
  switch (answer.delivery) {
    case Delivery::Whole:
    case Delivery::HalfAsWhole:
      socket->write(head + body);
      return;
    case Delivery::ClosedBeforeAnswer:
      break;
    case Delivery::ClosedInHead:
      socket->write(head.first(20));
      break;
    case Delivery::ClosedInBody:
      socket->write(head + half);
      break;
  }
  socket->disconnectFromHost();
}

}  // namespace

SlackServer::SlackServer() : m_worker(new QObject) {
  m_worker->moveToThread(&m_thread);
  QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
  m_thread.start();
  QMetaObject::invokeMethod(m_worker, [this] { listen(); }, Qt::BlockingQueuedConnection);
}

SlackServer::~SlackServer() {
  m_thread.quit();
  m_thread.wait();
}

QUrl SlackServer::apiBaseURL() const {
  return QUrl(u"http://127.0.0.1:%1/api"_s.arg(m_port));
}

void SlackServer::answer(const QByteArray& method, Answer answer) {
  const std::lock_guard lock(m_mutex);
  m_answers[method] = std::move(answer);
}

std::vector<SlackServer::Request> SlackServer::requests() const {
  const std::lock_guard lock(m_mutex);
  return m_requests;
}

void SlackServer::listen() {
  auto* server = new QTcpServer(m_worker);
  QObject::connect(server, &QTcpServer::pendingConnectionAvailable, server, [this, server] {
    while (QTcpSocket* socket = server->nextPendingConnection()) {
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { read(socket); });
      QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
      read(socket);
    }
  });
  ASSERT_TRUE(server->listen(QHostAddress::LocalHost));
  m_port = server->serverPort();
}

void SlackServer::read(QTcpSocket* socket) {
  const QByteArray received = socket->peek(socket->bytesAvailable());
  const auto headEnd = received.indexOf("\r\n\r\n");
  if (headEnd < 0) return;
  socket->skip(headEnd + 4);
  const QByteArray head = received.first(headEnd);
  const QByteArray target = head.split(' ').value(1);
  const QByteArray authorization = headerOf(head, "Authorization");
  const QByteArray method = target.split('?').first().split('/').last();
  Answer answer;
  {
    const std::lock_guard lock(m_mutex);
    m_requests.push_back({target, authorization});
    answer = answerTo(method, authorization);
  }
  send(socket, answer);
}

SlackServer::Answer SlackServer::answerTo(const QByteArray& method,
                                          const QByteArray& authorization) const {
  if (const auto scripted = m_answers.find(method); scripted != m_answers.end())
    return scripted->second;
  if (authorization != "Bearer "_ba + goodToken) return {R"({"ok":false,"error":"invalid_auth"})"};
  if (method == "auth.test") return {teamAnswer};
  if (method == "users.list") return {usersAnswer};
  if (method == "conversations.list") return {channelsAnswer};
  return {R"({"ok":false,"error":"unknown_method"})"};
}

}  // namespace vemo
