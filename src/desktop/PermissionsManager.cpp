#include "desktop/PermissionsManager.h"

#include <QUrl>
#include <memory>

#include "ports/SystemPermissions.h"
#include "telemetry/Telemetry.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pollInterval = 2s;

/// `unknown` is what an authorization that the table doesn't know stands for.
MicStatus micStatusFor(MicrophoneAuthorization authorization, MicStatus unknown) {
  switch (authorization) {
    case MicrophoneAuthorization::NotDetermined:
      return MicStatus::NotDetermined;
    case MicrophoneAuthorization::Denied:
      return MicStatus::Denied;
    case MicrophoneAuthorization::Granted:
      return MicStatus::Granted;
    case MicrophoneAuthorization::Unknown:
      break;
  }
  return unknown;
}

}  // namespace

PermissionsManager::PermissionsManager(SystemPermissions& system, Clock& clock,
                                       MainThread& mainThread, Telemetry& telemetry)
    : m_system(system), m_clock(clock), m_telemetry(telemetry), m_tasks(mainThread) {
  refresh();
}

void PermissionsManager::refresh() {
  setMicStatus(micStatusFor(m_system.microphone(), MicStatus::NotDetermined));
  const bool isTrusted = m_system.isAccessibilityTrusted();
  if (isTrusted == m_axTrusted) return;
  m_axTrusted = isTrusted;
  changed.notify();
}

void PermissionsManager::startPolling() {
  if (std::exchange(m_isPolling, true)) return;
  m_tasks.start([&](std::stop_token stop) { return pollForEver(std::move(stop)); });
}

Task<> PermissionsManager::pollForEver(std::stop_token stop) {
  while (co_await m_clock.sleep(pollInterval, stop) == SleepEnd::Elapsed) poll();
}

void PermissionsManager::poll() {
  setMicStatus(micStatusFor(m_system.microphone(), m_micStatus));
  const bool isTrusted = m_system.isAccessibilityTrusted();
  if (isTrusted == m_axTrusted) return;
  m_axTrusted = isTrusted;
  changed.notify();
  if (isTrusted) {
    m_telemetry.track(TelemetryEvent::permissionGranted(Permission::Accessibility));
    if (onAXTrustGained) onAXTrustGained();
  } else if (onAXTrustLost) {
    onAXTrustLost();
  }
}

void PermissionsManager::requestMicrophone() {
  const bool wasUndetermined = m_micStatus == MicStatus::NotDetermined;
  if (wasUndetermined)
    m_telemetry.track(TelemetryEvent::permissionPrompted(Permission::Microphone));
  m_system.requestMicrophone([this, wasUndetermined](bool isGranted) {
    if (wasUndetermined)
      m_telemetry.track(isGranted ? TelemetryEvent::permissionGranted(Permission::Microphone)
                                  : TelemetryEvent::microphoneDenied());
    refresh();
  });
}

void PermissionsManager::promptAccessibility() {
  if (!m_system.promptAccessibility())
    m_telemetry.track(TelemetryEvent::permissionPrompted(Permission::Accessibility));
}

void PermissionsManager::openSettings(const QString& url) {
  const QUrl pane(url, QUrl::StrictMode);
  if (pane.isValid() && !pane.scheme().isEmpty()) m_system.openSettings(pane);
}

void PermissionsManager::setMicStatus(MicStatus status) {
  if (status == m_micStatus) return;
  m_micStatus = status;
  changed.notify();
}

}  // namespace vemo
