// The settings window's real models on fakes, brought into a state that somebody wants to look at.
//
// Main thread only. Time stands still until it is let pass.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <semaphore>
#include <span>

#include "base/SerialQueue.h"
#include "fakes/FakeApplicationSheets.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeLocalKeyMonitor.h"
#include "fakes/FakeLoginItem.h"
#include "fakes/FakeUpdater.h"
#include "integrations/WorkspaceIndexer.h"
#include "session/SessionOnFakes.h"
#include "ui/models/SettingsModel.h"
#include "updates/UpdateManager.h"
#include "windows/offline/OfflineWindow.h"

namespace vemo {

/// A base, so that it is there before the session.
struct SettingsTime {
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
};

class SettingsOnFakes : public OfflineWindow, private SettingsTime, private SessionOnFakes {
 public:
  /// All states that can be asked for, in the order in which they are best looked at.
  static QStringList states();

  /// `state` is one of states().
  explicit SettingsOnFakes(const QString& state);
  ~SettingsOnFakes() override;

  SettingsModel& model() { return *m_model; }
  FakeLocalKeyMonitor& keys() { return m_keys; }

  /// How often the user has ended the program.
  int quits() const { return m_quits; }

  Scene scene() const override { return Scene::Settings; }
  QObject& viewModel() override { return *m_model; }
  void pass(Clock::Duration duration) override { clock.advance(duration); }

 private:
  struct State {
    const char16_t* name;
    void (*prepare)(SettingsOnFakes&);  ///< what is there at the start
    void (*act)(SettingsOnFakes&);      ///< what happens then
  };
  static std::span<const State> table();

  void start();
  void signOut();
  void showSystem();
  void startUpdates();
  /// The disk gives nothing while somebody looks.
  void holdDisk();
  void deleteAccount();

  std::binary_semaphore m_diskMayGoOn{0};
  int m_quits = 0;
  SerialQueue m_diskReader{"vemo.offline"};
  FakeLocalKeyMonitor m_keys;
  FakeLoginItem m_loginItem;
  FakeApplicationSheets m_sheets;
  std::optional<FolderChooserModel> m_folderChooser;
  std::optional<WorkspaceIndexer> m_workspace;
  std::optional<UpdateManager> m_updates;
  std::optional<SettingsModel> m_model;
};

}  // namespace vemo
