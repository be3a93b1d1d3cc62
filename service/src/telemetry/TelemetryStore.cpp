#include "telemetry/TelemetryStore.h"

#include <soci/boost-optional.h>

#include <boost/optional.hpp>

namespace vemo::service {

namespace {

using soci::use;

long long dayOf(Moment moment) {
  return std::chrono::floor<std::chrono::days>(moment).time_since_epoch().count();
}

template <typename Value>
auto stored(const std::optional<Value>& value) {
  using Column = std::conditional_t<std::is_integral_v<Value>, long long, Value>;
  return value ? boost::optional<Column>(*value) : boost::optional<Column>();
}

}  // namespace

void TelemetryStore::addEvents(std::optional<AccountId> account, const Installation& installation,
                               std::span<const ReportedEvent> events, Moment now) {
  const auto owner = stored(account);
  const long long day = dayOf(now);
  long long happenedAt = 0;
  std::string name;
  std::string props;
  m_database.inTransaction([&] {
    soci::statement statement =
        (m_database.session().prepare
             << "INSERT INTO events (account, device, app_version, name, props, happened_at, "
                "received_day) VALUES (:account, :device, :version, :name, :props, :at, :day)",
         use(owner), use(installation.device), use(installation.appVersion), use(name), use(props),
         use(happenedAt), use(day));
    for (const auto& event : events) {
      name = event.name;
      props = event.props;
      happenedAt = event.at.time_since_epoch().count();
      statement.execute(true);
    }
  });
}

void TelemetryStore::noteStart(const Installation& installation, Moment now) {
  const long long day = dayOf(now);
  const auto locale = stored(installation.locale);
  const auto timeZone = stored(installation.timeZone);
  m_database.session()
      << "INSERT INTO installations (device, platform, app_version, os_version, model, locale, "
         "time_zone, first_day, last_day, starts) VALUES (:device, :platform, :app, :os, :model, "
         ":locale, :zone, :day, :last, 1) ON CONFLICT (device) DO UPDATE SET platform = "
         "excluded.platform, app_version = excluded.app_version, os_version = "
         "excluded.os_version, model = excluded.model, locale = excluded.locale, time_zone = "
         "excluded.time_zone, last_day = excluded.last_day, starts = installations.starts + 1",
      use(installation.device), use(installation.platform), use(installation.appVersion),
      use(installation.osVersion), use(installation.model), use(locale), use(timeZone), use(day),
      use(day);
}

void TelemetryStore::putDeviceReport(AccountId account, const std::string& device,
                                     const std::string& report, Moment now) {
  const long long seconds = now.time_since_epoch().count();
  const int newest = devicesAnAccount;
  auto& session = m_database.session();
  m_database.inTransaction([&] {
    session << "INSERT INTO device_reports (account, device, report, received_at) SELECT id, "
               ":device, :report, :now FROM accounts WHERE id = :account ON CONFLICT (account, "
               "device) DO UPDATE SET report = excluded.report, received_at = "
               "excluded.received_at",
        use(device), use(report), use(seconds), use(account);
    session << "DELETE FROM device_reports WHERE account = :account AND device NOT IN (SELECT "
               "device FROM device_reports WHERE account = :same ORDER BY received_at DESC, "
               "device LIMIT :newest)",
        use(account), use(account), use(newest);
  });
}

void TelemetryStore::forgetBefore(Moment moment) {
  const long long day = dayOf(moment);
  auto& session = m_database.session();
  session << "DELETE FROM events WHERE received_day < :day", use(day);
  session << "DELETE FROM installations WHERE last_day < :day", use(day);
}

}  // namespace vemo::service
