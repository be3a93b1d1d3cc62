// What clients have reported, in the database of the accounts. One thread at a time, with its
// Database; throws soci::soci_error.
#pragma once

#include <span>

#include "telemetry/TelemetryBodies.h"

namespace vemo::service {

class TelemetryStore {
 public:
  static constexpr int devicesAnAccount = 50;

  explicit TelemetryStore(Database& database) : m_database(database) {}

  /// Without an account, the events stay when accounts go.
  void addEvents(std::optional<AccountId> account, const Installation& installation,
                 std::span<const ReportedEvent> events, Moment now);

  /// Counts one more start of the installation.
  void noteStart(const Installation& installation, Moment now);

  /// The newest report of a device counts; of an account's devices, the newest ones.
  void putDeviceReport(AccountId account, const std::string& device, const std::string& report,
                       Moment now);

  /// Removes events and installations of which nothing was heard for so long.
  void forgetBefore(Moment moment);

 private:
  Database& m_database;
};

}  // namespace vemo::service
