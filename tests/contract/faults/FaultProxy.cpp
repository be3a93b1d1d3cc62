#include "FaultProxy.h"

#include <gtest/gtest.h>

#include "FaultConnection.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

/// A listening port. One of a passage's own lets in a single client.
class FaultProxy::Door : public QTcpServer {
 public:
  Door(FaultProxy& proxy, std::optional<Id> early) : m_proxy(proxy), m_early(early) {
    EXPECT_TRUE(listen(QHostAddress::LocalHost));
    port = serverPort();
  }

  quint16 port = 0;

 protected:
  void incomingConnection(qintptr descriptor) override {
    QTcpSocket* client = nullptr;
    if (m_proxy.m_tls) {
      auto* tls = new QSslSocket;
      tls->setSslConfiguration(*m_proxy.m_tls);
      client = tls;
    } else {
      client = new QTcpSocket;
    }
    client->setSocketDescriptor(descriptor);
    new FaultConnection(m_proxy, client, m_early, this);
    if (m_early) close();
  }

 private:
  FaultProxy& m_proxy;
  const std::optional<Id> m_early;
};

FaultProxy::FaultProxy(Clock& clock, MainThread& mainThread, quint16 servicePort,
                       std::optional<QSslConfiguration> tls)
    : m_clock(clock),
      m_mainThread(mainThread),
      m_servicePort(servicePort),
      m_tls(std::move(tls)),
      m_door(std::make_unique<Door>(*this, std::nullopt)) {
  EXPECT_TRUE(m_nobody.bind(QHostAddress::LocalHost));
}

FaultProxy::~FaultProxy() {
  m_ownDoors.clear();
  m_door.reset();
}

FaultProxy::Id FaultProxy::add(Passage passage) {
  m_passages.emplace(++m_lastId, std::move(passage));
  return m_lastId;
}

QUrl FaultProxy::route(const QUrl& url, Id id) {
  quint16 port = m_door->port;
  if (m_passages.at(id).stage == Passage::Stage::Handshake)
    port = m_ownDoors.emplace_back(std::make_unique<Door>(*this, id))->port;
  QUrl routed = addressed(url, port);
  routed.setPath(u"/%1%2"_s.arg(id).arg(url.path()));
  return routed;
}

QUrl FaultProxy::routeToNobody(const QUrl& url) const {
  return addressed(url, m_nobody.localPort());
}

QUrl FaultProxy::addressed(QUrl url, quint16 port) const {
  url.setScheme(m_tls ? u"https"_s : u"http"_s);
  url.setHost(m_tls ? u"localhost"_s : u"127.0.0.1"_s);
  url.setPort(port);
  return url;
}

}  // namespace vemo
