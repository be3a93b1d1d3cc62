// The three requests that Telemetry sends: a batch of events, the ping of an installation, the
// report on a device. Main thread; nothing here fails.
#pragma once

#include <QJsonObject>
#include <QString>
#include <span>

#include "base/Clock.h"
#include "ports/DeviceInformation.h"
#include "ports/HttpSession.h"
#include "ports/SystemInformation.h"
#include "telemetry/TelemetryEvent.h"

namespace vemo {

class Settings;
struct DeploymentConfiguration;

/// An event that waits for its delivery.
struct EventRecord {
  TelemetryEvent event;
  Clock::WallTime at;  ///< when it was tracked
};

class TelemetryRequests {
 public:
  TelemetryRequests(const Settings& settings, const DeploymentConfiguration& configuration,
                    const SystemInformation& system)
      : m_settings(settings), m_configuration(configuration), m_system(system) {}

  /// A batch. The class of an event is not sent.
  HttpRequest events(std::span<const EventRecord> batch, const QString& token) const;

  /// The ping, which belongs to no account.
  HttpRequest installReport(const DeviceFacts& device) const;

  /// What is told of the device; less while the user doesn't share usage statistics.
  QJsonObject deviceReport(const DeviceFacts& device) const;
  HttpRequest deviceReport(const QByteArray& report, const QString& token) const;

 private:
  HttpRequest post(const QString& path, std::chrono::milliseconds timeout) const;
  void addCommonHeaders(HttpRequest& request, const QString& token) const;
  void addInstallation(HttpRequest& request) const;

  const Settings& m_settings;
  const DeploymentConfiguration& m_configuration;
  const SystemInformation& m_system;
};

/// ISO 8601 in UTC, whole seconds: "2026-03-14T01:02:03Z".
QString iso8601(Clock::WallTime time);

}  // namespace vemo
