// Takes the program through its launch, and answers what the desktop asks of it as a whole: to come
// back, to open addresses, to end.
//
// One, made in the composition root. Main thread only. The one refusal is a place that may be gone
// tomorrow; then nothing else of the launch runs. Failures of the services are their own matter.
#pragma once

#include <QCoreApplication>
#include <QList>
#include <QStringList>
#include <QUrl>
#include <functional>

#include "base/TaskScope.h"
#include "ports/InstallLocation.h"

namespace vemo {

class ApplicationWindows;
class CriticalAlert;
class DebugLog;
class Scenes;
class Settings;

/// What a launch starts, each when its turn has come.
struct LaunchServices {
  std::function<void()> bootstrapDictation;
  std::function<void()> startUpdates;
  std::function<void(bool launchedAtLogin)> startTelemetry;
  std::function<void()> endTelemetry;
  std::function<Task<>(std::stop_token)> refreshProfile;
  std::function<void()> terminate;
};

class AppDelegate {
  Q_DECLARE_TR_FUNCTIONS(AppDelegate)

 public:
  /// All of it outlives the delegate.
  struct Neighbours {
    MainThread& mainThread;
    DebugLog& debugLog;
    Settings& settings;
    ApplicationWindows& windows;
    Scenes& scenes;
    CriticalAlert& alert;
    InstallLocation location;
    LaunchServices services;
  };

  explicit AppDelegate(Neighbours neighbours);

  /// `arguments` are those that the process was started with.
  void applicationWillFinishLaunching(const QStringList& arguments);
  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  /// The user has started the program once more.
  bool applicationShouldHandleReopen(bool hasVisibleWindows);

  /// An address of this program's own scheme brings it forward, with a window where none is open.
  void applicationOpenURLs(const QList<QUrl>& urls);

  bool launchedAtLogin() const { return m_launchedAtLogin; }

 private:
  bool refusesLocation();
  void setDockPresence();
  void restyleWindows();
  bool hasOpenWindow() const;

  Neighbours m_with;
  bool m_launchedAtLogin = false;
  bool m_hasLaunched = false;
  TaskScope m_tasks;
};

}  // namespace vemo
