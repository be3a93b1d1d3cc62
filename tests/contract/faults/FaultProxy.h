// A proxy between client and service that lets each request pass as a test says.
//
// The client is sent here by route(), which makes an address of the proxy's; a path prefix, taken
// off again, tells the request's passage. It forwards every byte else unchanged. Lives on the
// test's own event loop; stalls last on the test's clock, in its queue.
#pragma once

#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "Passage.h"
#include "base/MainThread.h"

namespace vemo {

class FaultProxy {
 public:
  using Id = int;

  /// With a configuration it speaks TLS to the client. To the service it never does.
  FaultProxy(Clock& clock, MainThread& mainThread, quint16 servicePort,
             std::optional<QSslConfiguration> tls = {});
  ~FaultProxy();
  FaultProxy(const FaultProxy&) = delete;
  FaultProxy& operator=(const FaultProxy&) = delete;

  Id add(Passage passage);
  /// Where the request of that passage is to be sent.
  QUrl route(const QUrl& url, Id id);
  /// Where every connection is refused.
  QUrl routeToNobody(const QUrl& url) const;

  /// The passages that are at their stall.
  const std::set<Id>& stalled() const { return m_stalled; }
  const Passage& passage(Id id) const { return m_passages.at(id); }
  int connectionCount() const { return m_connectionCount; }

 private:
  class Door;
  friend class FaultConnection;

  QUrl addressed(QUrl url, quint16 port) const;

  Clock& m_clock;
  MainThread& m_mainThread;
  const quint16 m_servicePort;
  const std::optional<QSslConfiguration> m_tls;
  QTcpSocket m_nobody;  ///< holds a port that nobody listens at
  Id m_lastId = 0;
  std::map<Id, Passage> m_passages;
  std::set<Id> m_stalled;
  int m_connectionCount = 0;
  std::unique_ptr<Door> m_door;
  /// One for each passage whose fate is sealed before its path can be read.
  std::vector<std::unique_ptr<Door>> m_ownDoors;
};

}  // namespace vemo
