#include "telemetry/TelemetryRequests.h"

#include <QDateTime>
#include <QJsonArray>
#include <utility>

#include "base/Json.h"
#include "base/Text.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto eventsTimeout = 15s;
constexpr auto reportTimeout = 60s;

void insertIfKnown(QJsonObject& report, const QString& key, const std::optional<QString>& fact) {
  if (fact) report.insert(key, *fact);
}

void insertIfKnown(QJsonObject& report, const QString& key, const QStringList& facts) {
  if (!facts.isEmpty()) report.insert(key, QJsonArray::fromStringList(facts));
}

}  // namespace

HttpRequest TelemetryRequests::events(std::span<const EventRecord> batch,
                                      const QString& token) const {
  QJsonArray events;
  for (const auto& [event, at] : batch) {
    events.append(QJsonObject{
        {u"name"_s, event.name()}, {u"props"_s, event.props()}, {u"at"_s, iso8601(at)}});
  }
  HttpRequest request = post(u"desktop/events"_s, eventsTimeout);
  addCommonHeaders(request, token);
  request.body = compactJson(QJsonObject{{u"events"_s, events}});
  return request;
}

HttpRequest TelemetryRequests::installReport(const DeviceFacts& device) const {
  HttpRequest request = post(u"telemetry/install"_s, reportTimeout);
  addInstallation(request);
  const auto add = [&](const QByteArray& name, const QString& value) {
    request.headers.emplace_back(name, headerValue(value));
  };
  add("x-device-model"_ba, m_system.deviceModel.value_or(u"unknown"_s));
  if (m_settings.get(keys::shareUsageStatistics, true)) {
    if (!device.localeIdentifier.isEmpty()) add("x-locale"_ba, device.localeIdentifier);
    if (device.timeZone) add("x-timezone"_ba, *device.timeZone);
  }
  return request;
}

QJsonObject TelemetryRequests::deviceReport(const DeviceFacts& device) const {
  const bool sharesUsage = m_settings.get(keys::shareUsageStatistics, true);
  QJsonObject report{
      {u"cpuArchitecture"_s, m_system.processorArchitecture},
      {u"osVersion"_s, m_system.systemVersionText},
      {u"appVersion"_s, m_system.applicationVersion},
      {u"appBuild"_s, m_system.applicationBuild},
      {u"versionLabel"_s, m_system.versionLabel()},
      {u"shareUsageStatistics"_s, sharesUsage},
  };
  insertIfKnown(report, u"macModel"_s, m_system.deviceModel);
  insertIfKnown(report, u"chip"_s, m_system.processorName);
  if (!sharesUsage) return report;

  if (device.displayCount) report.insert(u"displayCount"_s, *device.displayCount);
  insertIfKnown(report, u"mainDisplay"_s, device.mainDisplay);
  insertIfKnown(report, u"appearance"_s, device.appearance);
  report.insert(u"launchAtLogin"_s, m_settings.get(keys::launchAtLogin, true));
  report.insert(u"inApplicationsFolder"_s, device.inApplicationsFolder);
  insertIfKnown(report, u"languages"_s, device.languages);
  insertIfKnown(report, u"localeRegion"_s, device.localeRegion);
  insertIfKnown(report, u"timeZone"_s, device.timeZone);
  insertIfKnown(report, u"inputSources"_s, device.inputSources);
  insertIfKnown(report, u"micType"_s, device.microphoneType);
  return report;
}

HttpRequest TelemetryRequests::deviceReport(const QByteArray& report, const QString& token) const {
  HttpRequest request = post(u"desktop/device"_s, reportTimeout);
  addCommonHeaders(request, token);
  request.body = report;
  return request;
}

HttpRequest TelemetryRequests::post(const QString& path, std::chrono::milliseconds timeout) const {
  return {.method = "POST"_ba,
          .url = m_configuration.api(path),
          .headers = {},
          .body = {},
          .timeout = timeout};
}

void TelemetryRequests::addCommonHeaders(HttpRequest& request, const QString& token) const {
  if (!token.isEmpty())
    request.headers.emplace_back("Authorization"_ba, "Bearer " + headerValue(token));
  addInstallation(request);
}

void TelemetryRequests::addInstallation(HttpRequest& request) const {
  const QString installId = m_settings.get(keys::telemetryInstallId, QString());
  request.headers.insert(request.headers.end(),
                         {{"Content-Type"_ba, "application/json"_ba},
                          {"x-platform"_ba, "macos"_ba},
                          {"x-device-id"_ba, headerValue(installId)},
                          {"x-app-version"_ba, headerValue(m_system.versionLabel())},
                          {"x-os-version"_ba, headerValue(m_system.systemVersionText)}});
}

QString iso8601(Clock::WallTime time) {
  const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
  return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::UTC).toString(Qt::ISODate);
}

}  // namespace vemo
