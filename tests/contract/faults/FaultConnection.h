// One connection of a client's to the proxy, with its requests one after the other. Belongs to the
// door that it came in by, and goes with its socket.
#pragma once

#include <QPointer>
#include <QSslSocket>
#include <QTcpSocket>
#include <optional>

#include "FaultProxy.h"
#include "base/TaskScope.h"

namespace vemo {

class FaultConnection : public QObject {
 public:
  /// `early` is the passage of a client that is met at the door, before it has said what it wants.
  FaultConnection(FaultProxy& proxy, QTcpSocket* client, std::optional<FaultProxy::Id> early,
                  QObject* door);
  ~FaultConnection() override;

 private:
  enum class Stall { Ahead, UnderWay, Over };

  /// Whether the stall of that stage is still to end.
  bool isBefore(Passage::Stage stage) const {
    return m_passage.stage == stage && m_stall != Stall::Over;
  }
  bool isEarly() const { return m_id && m_head.isEmpty(); }
  void admit();
  void proceed();
  bool readHead();
  qsizetype requestSize() const { return m_head.size() + m_bodySize; }
  void forward();
  void takeAnswer();
  void answer();
  void stallOnce();
  Task<> stallFor(Clock::Duration duration, std::stop_token stop);
  void endStall();
  void finishRequest();

  FaultProxy& m_proxy;
  QTcpSocket* const m_client;
  QPointer<QTcpSocket> m_service;
  std::optional<FaultProxy::Id> m_id;
  Passage m_passage;
  Stall m_stall = Stall::Ahead;
  QByteArray m_received;
  QByteArray m_head;  ///< as the service gets it; empty until it is whole
  qsizetype m_bodySize = 0;
  qsizetype m_forwarded = 0;
  QByteArray m_answer;
  bool m_isAnswered = false;
  TaskScope m_scope;
};

}  // namespace vemo
