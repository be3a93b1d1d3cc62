#include "FaultConnection.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>

#include "fakes/HttpWire.h"

namespace vemo {

namespace {

qsizetype shareOf(qsizetype size, double share) {
  return static_cast<qsizetype>(static_cast<double>(size) * share);
}

void reset(QTcpSocket* socket) {
  const linger atOnce{.l_onoff = 1, .l_linger = 0};
  setsockopt(static_cast<int>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce,
             sizeof atOnce);
  socket->abort();
}

/// The last piece of an upload comes only when the pieces before it have been acknowledged, which
/// takes 40 ms else. Lasts till the kernel thinks better of it.
void acknowledgeAtOnce(QTcpSocket* socket) {
  const int on = 1;
  setsockopt(static_cast<int>(socket->socketDescriptor()), IPPROTO_TCP, TCP_QUICKACK, &on,
             sizeof on);
}

}  // namespace

FaultConnection::FaultConnection(FaultProxy& proxy, QTcpSocket* client,
                                 std::optional<FaultProxy::Id> early, QObject* door)
    : QObject(door), m_proxy(proxy), m_client(client), m_scope(proxy.m_mainThread) {
  ++proxy.m_connectionCount;
  client->setParent(this);
  client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
  connect(client, &QTcpSocket::disconnected, this, &QObject::deleteLater);
  if (!early) {
    admit();
    return;
  }
  m_id = early;
  m_passage = proxy.m_passages.at(*early);
  connect(client, &QTcpSocket::readyRead, this, [this] {
    if (isEarly()) stallOnce();
  });
}

FaultConnection::~FaultConnection() {
  --m_proxy.m_connectionCount;
  if (m_id) m_proxy.m_stalled.erase(*m_id);
  m_client->disconnect(this);
}

void FaultConnection::admit() {
  m_id.reset();
  connect(m_client, &QTcpSocket::readyRead, this, [this] {
    m_received += m_client->readAll();
    acknowledgeAtOnce(m_client);
    proceed();
  });
  if (auto* tls = qobject_cast<QSslSocket*>(m_client)) {
    tls->startServerEncryption();
    return;
  }
  m_received += m_client->readAll();
  proceed();
}

void FaultConnection::proceed() {
  if (m_head.isEmpty() && !readHead()) return;
  const bool stallsHere = isBefore(Passage::Stage::Request);
  if (!m_passage.answer) forward();
  if (stallsHere && m_received.size() >= shareOf(requestSize(), m_passage.share))
    return stallOnce();
  if (!stallsHere && m_received.size() >= requestSize() && m_passage.answer) {
    m_answer = *m_passage.answer;
    answer();
  }
}

/// Takes the passage's number out of the target, "/17/path" becomes "/path".
bool FaultConnection::readHead() {
  const auto size = httpMessageSize(m_received);
  if (!size) return false;
  const qsizetype number = m_received.indexOf(" /") + 2;
  const qsizetype path = m_received.indexOf('/', number);
  m_id = m_received.mid(number, path - number).toInt();
  m_received.remove(number, path - number + 1);
  m_passage = m_proxy.m_passages.at(*m_id);
  m_stall = m_passage.stage == Passage::Stage::Handshake ? Stall::Over : Stall::Ahead;
  const qsizetype headSize = m_received.indexOf("\r\n\r\n") + 4;
  m_head = m_received.first(headSize);
  m_bodySize = *size - (path - number + 1) - headSize;
  return true;
}

void FaultConnection::forward() {
  if (!m_service) {
    m_service = new QTcpSocket(this);
    m_service->connectToHost(QHostAddress::LocalHost, m_proxy.m_servicePort);
    m_service->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_service, &QTcpSocket::readyRead, this, [this] { takeAnswer(); });
  }
  const bool stallsHere = isBefore(Passage::Stage::Request);
  const qsizetype limit = stallsHere ? shareOf(requestSize(), m_passage.share) : requestSize();
  const qsizetype until = std::min(limit, m_received.size());
  if (until > m_forwarded) m_service->write(m_received.mid(m_forwarded, until - m_forwarded));
  m_forwarded = std::max(m_forwarded, until);
}

void FaultConnection::takeAnswer() {
  m_answer += m_service->readAll();
  const auto size = httpMessageSize(m_answer);
  if (!size || m_answer.size() < *size || m_isAnswered) return;
  EXPECT_EQ(m_forwarded, requestSize()) << "the service has answered half a request";
  answer();
}

void FaultConnection::answer() {
  if (m_isAnswered) return;
  m_isAnswered = true;
  if (isBefore(Passage::Stage::Answer)) {
    m_client->write(m_answer.first(shareOf(m_answer.size(), m_passage.share)));
    stallOnce();
  } else {
    m_client->write(m_answer);
    finishRequest();
  }
}

void FaultConnection::stallOnce() {
  if (m_stall != Stall::Ahead) return;
  m_stall = Stall::UnderWay;
  if (m_passage.stall == Clock::Duration::zero()) return endStall();
  m_proxy.m_stalled.insert(*m_id);
  if (!m_passage.stall) return;
  m_scope.start([this](std::stop_token stop) { return stallFor(*m_passage.stall, stop); });
}

Task<> FaultConnection::stallFor(Clock::Duration duration, std::stop_token stop) {
  co_await m_proxy.m_clock.sleep(duration, stop);
  m_proxy.m_stalled.erase(*m_id);
  endStall();
}

void FaultConnection::endStall() {
  m_stall = Stall::Over;
  if (m_passage.end == Passage::End::Resets) {
    reset(m_client);
  } else if (m_passage.end == Passage::End::Closes) {
    m_client->disconnectFromHost();
  } else if (isEarly()) {
    admit();
  } else if (m_isAnswered) {
    m_client->write(m_answer.sliced(shareOf(m_answer.size(), m_passage.share)));
    finishRequest();
  } else {
    proceed();
  }
}

void FaultConnection::finishRequest() {
  if (m_passage.end == Passage::End::GoesOnAndCloses) m_client->disconnectFromHost();
  if (m_service) m_service->deleteLater();
  m_service = nullptr;
  m_received.remove(0, requestSize());
  m_id.reset();
  m_stall = Stall::Ahead;
  m_isAnswered = false;
  m_head.clear();
  m_answer.clear();
  m_forwarded = 0;
  if (!m_received.isEmpty()) proceed();
}

}  // namespace vemo
