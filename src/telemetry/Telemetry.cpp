#include "telemetry/Telemetry.h"

#include <QDateTime>
#include <QUuid>

#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::size_t queueLimit = 200;
constexpr std::int64_t slowRequestMs = 5000;

QDateTime toDateTime(Clock::WallTime time) {
  const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
  return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::UTC);
}

}  // namespace

Telemetry::Telemetry(const Clock& clock, Settings& settings)
    : m_clock(clock), m_settings(settings) {
  if (!settings.contains(keys::telemetryInstallId))
    settings.set(keys::telemetryInstallId,
                 QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper());
  if (!settings.contains(keys::telemetryFirstLaunchAt))
    settings.set(keys::telemetryFirstLaunchAt, toDateTime(clock.wallTime()));
}

QString Telemetry::installId() const {
  return m_settings.get(keys::telemetryInstallId, QString());
}

bool Telemetry::sharesUsage() const {
  return m_settings.get(keys::shareUsageStatistics, true);
}

void Telemetry::track(const QString& name, const QJsonObject& props, EventClass eventClass) {
  if (eventClass == EventClass::Optional && !sharesUsage()) return;
  const QString at = toDateTime(m_clock.wallTime()).toString(Qt::ISODate);
  m_queue.push_back({name, props, at, eventClass});
  if (m_queue.size() > queueLimit) m_queue.pop_front();
}

void Telemetry::recordFirstDictation() {
  if (m_settings.get(keys::telemetryFirstDictationSent, false)) return;
  m_settings.set(keys::telemetryFirstDictationSent, true);
  const auto firstLaunch = m_settings.get(keys::telemetryFirstLaunchAt);
  const qint64 seconds =
      firstLaunch ? firstLaunch->msecsTo(toDateTime(m_clock.wallTime())) / 1000 : 0;
  track(u"first_dictation"_s, {{u"secondsSinceFirstLaunch"_s, seconds}});
}

void Telemetry::reportRequestResult(const QString& endpoint, std::optional<int> status,
                                    Clock::MonotonicTime startedAt,
                                    const std::optional<HttpError>& error) {
  const auto elapsed = m_clock.monotonicTime() - startedAt;
  const qint64 ms = std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
  QJsonObject props{{u"endpoint"_s, endpoint}, {u"ms"_s, ms}};
  if (error) {
    props.insert(u"error"_s, u"url_%1"_s.arg(static_cast<int>(error->code)));
    track(u"request_failed"_s, props, EventClass::Essential);
  } else if (status && *status >= 400 && *status != 401) {
    props.insert(u"status"_s, *status);
    track(u"request_failed"_s, props, EventClass::Essential);
  } else if (ms >= slowRequestMs) {
    track(u"request_slow"_s, props, EventClass::Essential);
  }
}

}  // namespace vemo
