// The endpoints that clients report to: events, starts of an installation, devices of an account.
//
// Network thread only; owned by AccountServices. Answers come from the database's workers.
#pragma once

#include "database/DatabaseWorkers.h"
#include "http/Router.h"
#include "telemetry/TelemetryBodies.h"

namespace vemo::service {

class TelemetryApi {
 public:
  /// Of one network or account; what comes above that is refused.
  static constexpr int reportsAMinute = 60;

  TelemetryApi(DatabaseWorkers& database, bool behindProxy, Now now)
      : m_database(database), m_behindProxy(behindProxy), m_now(std::move(now)) {}

  void addTo(Router& router);

 private:
  void takeEvents(const Request& request, AnswerCompletion done);
  void noteInstallation(const Request& request, AnswerCompletion done);
  void takeDeviceReport(const Request& request, AnswerCompletion done);

  DatabaseWorkers& m_database;
  const bool m_behindProxy;
  const Now m_now;
};

}  // namespace vemo::service
