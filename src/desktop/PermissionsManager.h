// The two permissions that dictation can't work without: the microphone, and accessibility (hearing
// global keys and posting the paste shortcut).
//
// Observable, polled every two seconds, and changed only when something has changed. Main thread
// only; nothing here fails.
#pragma once

#include <functional>

#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/TaskScope.h"

class QString;

namespace vemo {

class SystemPermissions;
class Telemetry;

/// The settings panes in which the user grants the two.
inline constexpr auto microphonePane =
    u"x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone";
inline constexpr auto accessibilityPane =
    u"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

enum class MicStatus { Granted, Denied, NotDetermined };

class PermissionsManager {
 public:
  PermissionsManager(SystemPermissions& system, Clock& clock, MainThread& mainThread,
                     Telemetry& telemetry);

  MicStatus micStatus() const { return m_micStatus; }
  bool axTrusted() const { return m_axTrusted; }

  std::function<void()> onAXTrustGained;
  std::function<void()> onAXTrustLost;
  Notifier<> changed;

  /// Reads both permissions anew, without callback or event.
  void refresh();

  /// Reads both every two seconds from now on, for the life of the program.
  void startPolling();

  void requestMicrophone();
  void promptAccessibility();

  /// Opens a settings pane; a string that isn't a URL does nothing.
  void openSettings(const QString& url);

 private:
  Task<> pollForEver(std::stop_token stop);
  void poll();
  void setMicStatus(MicStatus status);

  SystemPermissions& m_system;
  Clock& m_clock;
  Telemetry& m_telemetry;
  MicStatus m_micStatus = MicStatus::NotDetermined;
  bool m_axTrusted = false;
  bool m_isPolling = false;
  TaskScope m_tasks;
};

}  // namespace vemo
