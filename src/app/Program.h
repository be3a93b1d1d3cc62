// The logic, each object made once and handed what it works with.
//
// Lives on the main thread. Members are destroyed from the last to the first, so each outlives what
// was given it.
#pragma once

#include <functional>

#include "account/AuthManager.h"
#include "account/GoogleSignIn.h"
#include "app/Desktop.h"
#include "app/Foundation.h"
#include "app/WindowSheets.h"
#include "audio/AudioRecorder.h"
#include "base/SerialQueue.h"
#include "desktop/HotkeyManager.h"
#include "desktop/PermissionsManager.h"
#include "desktop/TextInjector.h"
#include "integrations/SlackManager.h"
#include "integrations/WorkspaceIndexer.h"
#include "platform/logind/LogindSleep.h"
#include "platform/posix/SystemRandom.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtLastRequest.h"
#include "platform/sealed/SealedSecretBackend.h"
#include "platform/secretservice/KeyringWatch.h"
#include "platform/x11/X11LocalKeyMonitor.h"
#include "platform/xdg/AutostartEntry.h"
#include "platform/xdg/BrowserSignIn.h"
#include "platform/xdg/LinuxPermissions.h"
#include "platform/xdg/PortalFolderChooser.h"
#include "session/AppState.h"
#include "session/DictationRemoteControl.h"
#include "session/DictionaryList.h"
#include "session/ShortcutList.h"
#include "shaping/ContextProcessor.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/TokenReader.h"
#include "telemetry/Telemetry.h"
#include "transcription/TranscriptionClient.h"
#include "ui/HUDWindowController.h"
#include "ui/models/MainWindowModel.h"
#include "ui/models/MenuModel.h"
#include "ui/models/SettingsModel.h"
#include "ui/models/UpdateReadyCardModel.h"
#include "updates/UpdateManager.h"

namespace vemo {

struct Program {
  Program(Foundation& foundation, Desktop& desktop, const DeploymentConfiguration& configuration,
          DictationRemoteControl::Program remotely);

  void tokenArrived(const QString& account);
  MenuUpdates menuUpdates() const;

  QtHttpSession session;
  QtHttpSession hedgeSession;
  QtHttpSession sharedSession;  ///< of everything but dictation
  QtHttpSession updateSession;
  LinuxPermissions permissionsOfSystem;
  SealedSecretBackend sealedSecrets;  ///< where there is no keyring
  SecureTokenStore tokens;
  TokenReader tokenReader;
  QtLastRequest lastRequest;
  Telemetry telemetry;
  SystemRandom random;
  BrowserSignIn browserSignIn;
  GoogleSignIn googleSignIn;
  AuthManager auth;
  DictionaryList dictionary;
  ShortcutList shortcuts;
  SerialQueue diskReader{"vemo.workspace"};
  SlackManager slack;
  FolderChooserModel folderSheet;
  PortalFolderChooser folderChooser;
  WorkspaceIndexer workspace;
  PermissionsManager permissions;
  HotkeyManager hotkey;
  AudioRecorder recorder;
  TranscriptionClient client;
  ContextProcessor contextProcessor;
  TextInjector injector;
  HUDWindowController hud;
  AppState appState;
  WindowSheets sheets;
  UpdateManager updates;
  UpdateReadyCardModel updateCard{updates, appState};
  MenuModel menu;
  MainWindowModel mainWindow;
  X11LocalKeyMonitor localKeyMonitor;
  AutostartEntry loginItem;
  SettingsModel settingsWindow;
  LogindSleep machineSleep;
  KeyringWatch keyringWatch;
  std::vector<Observation> observations;
  TaskScope tasks;
  DictationRemoteControl remoteControl;
};

}  // namespace vemo
