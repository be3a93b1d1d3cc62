#include "telemetry/Telemetry.h"

#include <QDateTime>
#include <QUuid>
#include <algorithm>
#include <iterator>

#include "base/Json.h"
#include "ports/LastRequest.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::size_t queueLimit = 200;
constexpr std::size_t flushThreshold = 20;
constexpr std::size_t batchLimit = 50;
constexpr std::size_t crashLimit = 10;
constexpr auto flushInterval = 60s;
constexpr auto lastRequestLimit = 2000ms;
constexpr std::int64_t slowRequestMs = 5000;

QDateTime toDateTime(Clock::WallTime time) {
  const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
  return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::UTC);
}

bool isSuccess(const HttpResult& answer) {
  return answer && answer->status && *answer->status >= 200 && *answer->status < 300;
}

/// What the server has refused for good would be refused again.
bool isRefusal(const HttpResult& answer) {
  return answer && answer->status && *answer->status >= 400 && *answer->status < 500 &&
         *answer->status != 401;
}

}  // namespace

Telemetry::Telemetry(const Neighbours& neighbours)
    : m_with(neighbours),
      m_requests(neighbours.settings, neighbours.configuration, neighbours.system),
      m_sessionStart(neighbours.clock.monotonicTime()),
      m_tasks(neighbours.mainThread) {
  Settings& settings = m_with.settings;
  if (!settings.contains(keys::telemetryInstallId))
    settings.set(keys::telemetryInstallId,
                 QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper());
  if (!settings.contains(keys::telemetryFirstLaunchAt))
    settings.set(keys::telemetryFirstLaunchAt, toDateTime(m_with.clock.wallTime()));
}

QString Telemetry::installId() const {
  return m_with.settings.get(keys::telemetryInstallId, QString());
}

QString Telemetry::sessionToken() const {
  return m_with.tokens.read(QString::fromUtf16(authTokenAccount)).value_or(QString());
}

bool Telemetry::sharesUsage() const {
  return m_with.settings.get(keys::shareUsageStatistics, true);
}

void Telemetry::track(TelemetryEvent event) {
  if (isWelcome(event)) {
    enqueue(std::move(event));
    if (m_queue.size() >= flushThreshold) flush();
  }
}

bool Telemetry::isWelcome(const TelemetryEvent& event) const {
  return event.eventClass() == EventClass::Essential || sharesUsage();
}

void Telemetry::enqueue(TelemetryEvent event) {
  m_queue.push_back({std::move(event), m_with.clock.wallTime()});
  dropOldest();
  armFlushTimer();
}

void Telemetry::dropOldest() {
  while (m_queue.size() > queueLimit) m_queue.pop_front();
}

void Telemetry::start(bool launchedAtLogin) {
  m_with.crashes.subscribe([this](CrashDiagnostics::Payload payload) {
    m_with.mainThread.post([this, payload = std::move(payload)] { trackCrashes(payload); });
  });
  trackUpdate();
  track(TelemetryEvent::appLaunched(launchedAtLogin));
  sendInstallReport();
  sendDeviceReport(Urgency::IfDue);
  watchSettings();
  m_startedAt = m_with.clock.monotonicTime();
  armFlushTimer();
}

void Telemetry::trackUpdate() {
  const QString& build = m_with.system.applicationBuild;
  if (build.isEmpty()) return;
  const auto lastBuild = m_with.settings.get(keys::telemetryLastLaunchedBuild);
  if (lastBuild && *lastBuild != build)
    track(TelemetryEvent::updateInstalled(m_with.system.versionLabel(), build.toLongLong()));
  m_with.settings.set(keys::telemetryLastLaunchedBuild, build);
}

void Telemetry::trackCrashes(const CrashDiagnostics::Payload& payload) {
  for (std::size_t index = 0; index < std::min(payload.size(), crashLimit); ++index)
    track(TelemetryEvent::appCrashed(payload[index]));
}

void Telemetry::watchSettings() {
  m_settingsSnapshot = takeSettingsSnapshot(m_with.settings);
  m_settingsObservation = m_with.settings.changed.observe([this](const QString& name) {
    if (!isInSettingsSnapshot(name) || !m_settingsComparison.isFinished()) return;
    m_settingsComparison =
        m_tasks.start([&](std::stop_token stop) { return compareSettings(std::move(stop)); });
  });
}

Task<> Telemetry::compareSettings(std::stop_token) {
  auto snapshot = takeSettingsSnapshot(m_with.settings);
  const auto token = sessionToken().isEmpty() ? SessionToken::Absent : SessionToken::Present;
  for (auto& event : changesBetween(m_settingsSnapshot, snapshot, token)) track(std::move(event));
  m_settingsSnapshot = std::move(snapshot);
  co_return;
}

/// A timer that runs only while there is something to deliver, and rings as one that always runs.
void Telemetry::armFlushTimer() {
  if (!m_startedAt || m_queue.empty() || !m_flushTimer.isFinished()) return;
  m_flushTimer =
      m_tasks.start([&](std::stop_token stop) { return flushAtNextTick(std::move(stop)); });
}

Task<> Telemetry::flushAtNextTick(std::stop_token stop) {
  while (!m_queue.empty()) {
    const auto elapsed = m_with.clock.monotonicTime() - *m_startedAt;
    co_await m_with.clock.sleep(flushInterval - elapsed % flushInterval, stop);
    flush();
  }
}

void Telemetry::flush() {
  if (m_isFlushing || m_queue.empty()) return;
  const QString token = sessionToken();
  if (token.isEmpty()) return;
  m_isFlushing = true;
  m_tasks.start([&](std::stop_token stop) { return deliver(takeBatch(), token, std::move(stop)); });
}

std::vector<EventRecord> Telemetry::takeBatch() {
  const auto end = m_queue.begin() + std::ptrdiff_t(std::min(m_queue.size(), batchLimit));
  std::vector batch(std::move_iterator(m_queue.begin()), std::move_iterator(end));
  m_queue.erase(m_queue.begin(), end);
  return batch;
}

Task<> Telemetry::deliver(std::vector<EventRecord> batch, QString token, std::stop_token stop) {
  const int accountChanges = m_accountChanges;
  const auto answer =
      co_await m_with.session.send(m_requests.events(batch, token), std::move(stop));
  const bool isOver = isSuccess(answer) || isRefusal(answer);
  if (!isOver && accountChanges == m_accountChanges) restore(std::move(batch));
  m_isFlushing = false;
}

void Telemetry::restore(std::vector<EventRecord> batch) {
  m_queue.insert(m_queue.begin(), std::move_iterator(batch.begin()),
                 std::move_iterator(batch.end()));
  dropOldest();
  armFlushTimer();
}

void Telemetry::endSession() {
  const auto sinceStart = m_with.clock.monotonicTime() - m_sessionStart;
  auto ended = TelemetryEvent::sessionEnded(
      std::chrono::duration_cast<std::chrono::seconds>(sinceStart).count());
  // Not track(): a flush that nobody waits for would take the events along.
  if (isWelcome(ended)) enqueue(std::move(ended));
  const QString token = sessionToken();
  if (token.isEmpty() || m_queue.empty()) return;
  const auto batch = takeBatch();
  m_queue.clear();
  m_with.lastRequest.sendAndWait(m_requests.events(batch, token), lastRequestLimit);
}

void Telemetry::drainForAccountChange() {
  ++m_accountChanges;
  const auto batch = takeBatch();
  m_queue.clear();
  const QString token = sessionToken();
  if (token.isEmpty() || batch.empty()) return;
  m_tasks.start(
      [&](std::stop_token stop) { return send(m_requests.events(batch, token), std::move(stop)); });
}

Task<> Telemetry::send(HttpRequest request, std::stop_token stop) {
  co_await m_with.session.send(std::move(request), std::move(stop));
}

void Telemetry::recordFirstDictation() {
  Settings& settings = m_with.settings;
  if (settings.get(keys::telemetryFirstDictationSent, false)) return;
  settings.set(keys::telemetryFirstDictationSent, true);
  const auto firstLaunch = settings.get(keys::telemetryFirstLaunchAt);
  const auto now = toDateTime(m_with.clock.wallTime());
  track(TelemetryEvent::firstDictation(firstLaunch ? firstLaunch->msecsTo(now) / 1000 : 0));
}

void Telemetry::reportRequestResult(const QString& endpoint, std::optional<int> status,
                                    Clock::MonotonicTime startedAt,
                                    const std::optional<HttpError>& error) {
  const auto ms = millisecondsSince(startedAt);
  if (error) {
    track(TelemetryEvent::requestBroken(endpoint, ms, static_cast<int>(error->code)));
  } else if (status && *status >= 400 && *status != 401) {
    track(TelemetryEvent::requestFailed(endpoint, ms, *status));
  } else if (ms >= slowRequestMs) {
    track(TelemetryEvent::requestSlow(endpoint, ms));
  }
}

void Telemetry::reportUnreadableAnswer(const QString& endpoint, Clock::MonotonicTime startedAt) {
  track(TelemetryEvent::requestBroken(endpoint, millisecondsSince(startedAt), {}));
}

std::int64_t Telemetry::millisecondsSince(Clock::MonotonicTime startedAt) const {
  const auto elapsed = m_with.clock.monotonicTime() - startedAt;
  return std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
}

void Telemetry::setShareUsageStatistics(bool enabled) {
  m_with.settings.set(keys::shareUsageStatistics, enabled);
  if (!enabled) {
    std::erase_if(m_queue, [](const EventRecord& record) {
      return record.event.eventClass() != EventClass::Essential;
    });
  }
  sendDeviceReport(Urgency::Forced);
}

void Telemetry::sendInstallReport() {
  const DeviceFacts device = sharesUsage() ? m_with.device.read() : DeviceFacts();
  m_tasks.start([&](std::stop_token stop) {
    return send(m_requests.installReport(device), std::move(stop));
  });
}

void Telemetry::sendDeviceReport(Urgency urgency) {
  const QString token = sessionToken();
  if (token.isEmpty()) return;
  const DeviceFacts device = sharesUsage() ? m_with.device.read() : DeviceFacts();
  const QByteArray report = compactJson(m_requests.deviceReport(device));
  constexpr qsizetype dayLength = 10;
  const QString day = iso8601(m_with.clock.wallTime()).first(dayLength);
  const QString marker = day + QString::fromUtf8(report);
  // At a start, the token of a slow keyring is an occasion of its own.
  const bool isDue =
      marker != m_markerUnderWay && marker != m_with.settings.get(keys::telemetryDeviceReport);
  if (urgency == Urgency::IfDue && !isDue) return;
  m_markerUnderWay = marker;
  m_tasks.start([&](std::stop_token stop) {
    return deliverDeviceReport(m_requests.deviceReport(report, token), marker, std::move(stop));
  });
}

Task<> Telemetry::deliverDeviceReport(HttpRequest request, QString marker, std::stop_token stop) {
  const auto answer = co_await m_with.session.send(std::move(request), std::move(stop));
  if (m_markerUnderWay == marker) m_markerUnderWay.clear();
  if (isSuccess(answer)) m_with.settings.set(keys::telemetryDeviceReport, marker);
}

}  // namespace vemo
