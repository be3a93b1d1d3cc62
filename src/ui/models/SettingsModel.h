// The settings window: its tabs, and what is shown over them.
//
// Main thread only; one, made in the composition root, whether the window is open or not.
#pragma once

#include <QObject>
#include <functional>
#include <vector>

#include "base/Clock.h"
#include "ui/models/AccountSettingsModel.h"
#include "ui/models/CodebaseContextModel.h"
#include "ui/models/FolderChooserModel.h"
#include "ui/models/SettingsNavigation.h"
#include "ui/models/ShortcutRecorder.h"
#include "ui/models/SlackConnectionModel.h"
#include "ui/models/SystemSettingsModel.h"
#include "ui/models/ToastModel.h"
#include "ui/models/UpdateSettingsModel.h"

namespace vemo {

class SettingsModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(QObject* navigation READ navigation CONSTANT)
  Q_PROPERTY(QObject* account READ account CONSTANT)
  Q_PROPERTY(QObject* system READ system CONSTANT)
  Q_PROPERTY(QObject* codebase READ codebase CONSTANT)
  Q_PROPERTY(QObject* folderChooser READ folderChooser CONSTANT)
  Q_PROPERTY(QObject* slack READ slack CONSTANT)
  Q_PROPERTY(QObject* updates READ updates CONSTANT)
  Q_PROPERTY(QObject* recorder READ recorder CONSTANT)
  Q_PROPERTY(QObject* toast READ toast CONSTANT)

 public:
  /// What it works with; all of it outlives the model.
  struct With {
    MainThread& mainThread;
    Clock& clock;
    Settings& settings;
    DebugLog& debugLog;
    Telemetry& telemetry;
    AppState& appState;
    AuthManager& auth;
    PermissionsManager& permissions;
    HotkeyManager& hotkey;
    SlackManager& slackManager;
    WorkspaceIndexer& workspaceIndexer;
    FolderChooserModel& folderChooser;
    UpdateManager& updates;
    Clipboard& clipboard;
    LocalKeyMonitor& localKeyMonitor;
    LoginItem& loginItem;
    ApplicationWindows& windows;
    const DeploymentConfiguration& configuration;
    std::function<void()> quit;  ///< ends the program
    QLocale locale = QLocale::system();
  };

  explicit SettingsModel(With with);

  SettingsNavigation* navigation() { return &m_navigation; }
  AccountSettingsModel* account() { return &m_account; }
  SystemSettingsModel* system() { return &m_system; }
  CodebaseContextModel* codebase() { return &m_codebase; }
  FolderChooserModel* folderChooser() { return &m_folderChooser; }
  SlackConnectionModel* slack() { return &m_slack; }
  UpdateSettingsModel* updates() { return &m_updates; }
  ShortcutRecorder* recorder() { return &m_recorder; }
  ToastModel* toast() { return &m_toast; }

  /// The window has come up.
  Q_INVOKABLE void windowShown() {
    m_navigation.windowOpened();
    m_system.windowOpened();
  }
  /// The window has gone, and its sheets with it.
  Q_INVOKABLE void windowHidden() { closeSheets(); }

  Q_INVOKABLE void quit() { m_quit(); }

  bool hasOpenSheet() const;
  /// Closes the recorder and every dialog at once; nothing is saved.
  void closeSheets();

  /// The window is to close.
  Q_SIGNAL void closeRequested();

 private:
  std::function<void(const QString&)> showToast();

  FolderChooserModel& m_folderChooser;
  const std::function<void()> m_quit;
  ToastModel m_toast;
  SettingsNavigation m_navigation;
  AccountSettingsModel m_account;
  SystemSettingsModel m_system;
  CodebaseContextModel m_codebase;
  SlackConnectionModel m_slack;
  UpdateSettingsModel m_updates;
  ShortcutRecorder m_recorder;
};

}  // namespace vemo
