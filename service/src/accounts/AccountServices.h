// Everything that needs the accounts' database, put together: its workers, the endpoints of
// accounts and of what clients report, and the clearing of what has run out.
//
// Made and used on the network thread; owned by the program, and alive until the executor has run
// dry, which `stop` lets it.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <expected>
#include <memory>

#include "accounts/AccountApi.h"
#include "accounts/SignInApi.h"
#include "accounts/UsageMeter.h"
#include "http/AccessLog.h"
#include "identity/IdTokenChecks.h"
#include "telemetry/TelemetryApi.h"

namespace vemo::service {

class AccountServices {
 public:
  /// Opens the database and brings its schema up to date; the error is one line for the operator.
  /// `ownProviders` are trusted beside the one of the configuration, which outlives this.
  static std::expected<std::unique_ptr<AccountServices>, std::string> open(
      const Configuration& configuration, boost::asio::io_context& io, AccessLog& log,
      std::vector<TrustedProvider> ownProviders = {}, Now now = currentMoment);

  ~AccountServices() { m_checks.stop(); }

  void addTo(Router& router);
  void stop();

  DatabaseWorkers& database() { return m_database; }
  UsageMeter& usage() { return m_usage; }

 private:
  using Report = std::function<void(std::string_view)>;

  static constexpr DatabaseWorkers::Size databaseSize{.workers = 4, .waiting = 1024};
  static constexpr std::chrono::minutes clearingInterval{1};

  AccountServices(const Configuration& configuration, boost::asio::io_context& io,
                  const Report& report, std::vector<TrustedProvider> providers, const Now& now);

  void clearLater();

  // The two ask each other: the checks' threads end first, the checks themselves last.
  IdTokenChecks m_checks;
  DatabaseWorkers m_database;
  UsageMeter m_usage;
  AccountApi m_accounts;
  SignInApi m_signIns;
  TelemetryApi m_telemetry;
  const TelemetrySettings& m_telemetrySettings;
  const Now m_now;
  boost::asio::steady_timer m_clearing;
};

}  // namespace vemo::service
