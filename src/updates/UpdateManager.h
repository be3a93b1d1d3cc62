// Updates that don't get in the way: found and fetched in the background, told quietly, installed
// when the user asks and no dictation is running, or at the next quit.
//
// Main thread only. There is one, made in the composition root. Without a usable key in the
// deployment's configuration it stays without an updater, and every operation that needs one does
// nothing. Failures of updates are reported as events, not shown.
#pragma once

#include <QDateTime>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "ports/ApplicationWindows.h"
#include "ports/Updater.h"

namespace vemo {

class ApplicationSheets;
class DebugLog;
class Settings;
class Telemetry;
class TelemetryEvent;
struct DeploymentConfiguration;

/// A downloaded update that waits to be installed.
struct ReadyUpdate {
  QString version;
  std::optional<QString> notes;  ///< in the small markdown of ReleaseNotes

  friend bool operator==(const ReadyUpdate&, const ReadyUpdate&) = default;
};

class UpdateManager : public UpdaterDelegate, public UpdateUserDriverDelegate {
 public:
  /// What it works with; all of it outlives it.
  struct Neighbours {
    MainThread& mainThread;
    Clock& clock;
    Settings& settings;
    DebugLog& debugLog;
    Telemetry& telemetry;
    ApplicationWindows& windows;
    ApplicationSheets& sheets;
    const DeploymentConfiguration& configuration;
    MakeUpdater makeUpdater;
    std::function<bool()> isDictationIdle;
    std::function<void()> terminate;  ///< ends the program
  };

  explicit UpdateManager(Neighbours neighbours);

  /// Once, at launch.
  void start();

  bool isConfigured() const { return m_isConfigured; }
  bool canCheckForUpdates() const { return m_canCheckForUpdates; }
  const std::optional<QDateTime>& lastUpdateCheckDate() const { return m_lastUpdateCheckDate; }
  bool automaticallyChecksForUpdates() const { return m_automaticallyChecksForUpdates; }
  bool automaticallyDownloadsUpdates() const { return m_automaticallyDownloadsUpdates; }
  /// An update that has been found and that nobody has looked at yet.
  const std::optional<QString>& pendingUpdateVersion() const { return m_pendingUpdateVersion; }
  const std::optional<ReadyUpdate>& readyUpdate() const { return m_readyUpdate; }
  bool receivesBetaUpdates() const { return m_receivesBetaUpdates; }

  /// Changes with the dictation's phase, too, of which `changed` doesn't tell.
  bool canRestartNow() const;
  /// The user's "Restart to Update"; nothing at all while a dictation runs. One that begins while
  /// sheets close is waited for.
  void restartToUpdate();
  /// A check that the user asked for.
  void checkForUpdates();
  void setReceivesBetaUpdates(bool isOn);
  void setAutomaticallyChecksForUpdates(bool isOn);
  void setAutomaticallyDownloadsUpdates(bool isOn);
  /// Ends the program, after its sheets.
  void quitClosingSheets();

  Notifier<> changed;             ///< one of the fields above
  Notifier<> vemoCloseAllSheets;  ///< every window that shows a sheet dismisses it

  bool supportsGentleScheduledUpdateReminders() const override { return true; }
  bool shouldHandleShowingScheduledUpdate(const UpdateItem& update,
                                          ImmediateFocus focus) const override;
  void willHandleShowingUpdate(UpdateShownBy shownBy, const UpdateItem& update,
                               UpdateCheck check) override;
  void didReceiveUserAttention(const UpdateItem& update) override;
  void willFinishUpdateSession() override;

  QString feedUrl() const override;
  QStringList allowedChannels() const override;
  void didFindValidUpdate(const UpdateItem& update) override;
  void userDidMakeChoice(UpdateChoice choice, const UpdateItem& update) override;
  void didAbort(const UpdateError& error) override;
  bool willInstallUpdateOnQuit(const UpdateItem& update, std::function<void()> installNow) override;
  bool shouldPostponeRelaunch(const UpdateItem& update, std::function<void()> relaunch) override;

 private:
  void raiseApplication();
  void setPendingUpdateVersion(std::optional<QString> version);
  Task<> mirrorUpdater(std::stop_token stop);
  Task<> checkSoonAfterLaunch(std::stop_token stop);
  Task<> report(TelemetryEvent event);
  void reportLater(const TelemetryEvent& event);
  /// Runs `next` once no sheet is left: at once, or after having asked them to close.
  void closeSheetsBefore(std::function<void()> next);
  Task<> waitForSheets(std::function<void()> next);
  /// Runs `next` once no dictation runs: at once, or when the one that has begun meanwhile ends.
  void afterDictation(std::function<void()> next);
  Task<> waitForDictation(std::function<void()> next);

  const Neighbours m_with;
  const bool m_isConfigured;
  bool m_canCheckForUpdates = false;
  std::optional<QDateTime> m_lastUpdateCheckDate;
  bool m_automaticallyChecksForUpdates = true;
  bool m_automaticallyDownloadsUpdates = true;
  std::optional<QString> m_pendingUpdateVersion;
  std::optional<ReadyUpdate> m_readyUpdate;
  bool m_receivesBetaUpdates;
  std::unique_ptr<Updater> m_controller;  ///< absent until started
  std::function<void()> m_installReadyUpdate;
  Observation m_mirrors;
  std::optional<ActivationPolicy> m_policyToRestore;
  TaskScope m_tasks;
};

}  // namespace vemo
