// A session's logic over fake ports: AppState with its real neighbours, whatever drives time and
// the main queue. Who derives from it sets up what counts as there at the start, and calls
// startUp().
#pragma once

#include <memory>
#include <vector>

#include "account/AuthManager.h"
#include "base/Clock.h"
#include "base/MainThread.h"
#include "desktop/HotkeyManager.h"
#include "desktop/PermissionsManager.h"
#include "desktop/TextInjector.h"
#include "fakes/FakeApplicationWindows.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeClipboard.h"
#include "fakes/FakeFileTagLookup.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/FakeHaptics.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeInputDevice.h"
#include "fakes/FakeKeyEventSource.h"
#include "fakes/FakeKeyPoster.h"
#include "fakes/FakeLoneModifier.h"
#include "fakes/FakeRecordingIndicator.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/FakeSecureInput.h"
#include "fakes/FakeSecureRandom.h"
#include "fakes/FakeSounds.h"
#include "fakes/FakeSystemEvents.h"
#include "fakes/FakeSystemPermissions.h"
#include "fakes/FakeWebAuthentication.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "integrations/SlackManager.h"
#include "ports/SystemInformation.h"
#include "session/AppState.h"
#include "shaping/ContextProcessor.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "transcription/TranscriptionClient.h"

namespace vemo {

class SessionOnFakes {
 protected:
  SessionOnFakes(MainThread& mainThread, Clock& clock) : m_mainThread(mainThread), m_clock(clock) {
    secrets.add(u"brelmox.Vemo"_s, u"authToken"_s, "token");
    inputDevice.setTransport(InputTransport::Usb);
    accountHttp.answerAlways(u"/desktop/auth/profile"_s, 500);
    accountHttp.answerAlways(u"/languages"_s, 500);
    sounds.resources = {u"vemo_start"_s, u"vemo_stop"_s};
  }

  void startUp() {
    tokens =
        std::make_unique<SecureTokenStore>(std::vector<SecretBackend*>{&secrets}, storage.debugLog);
    if (isTokenExpected) tokens->expect(u"authToken"_s);
    auth = std::make_unique<AuthManager>(
        AuthManager::Neighbours{.mainThread = m_mainThread,
                                .clock = m_clock,
                                .tokens = *tokens,
                                .settings = storage.settings,
                                .debugLog = storage.debugLog,
                                .telemetry = accountTelemetry.telemetry,
                                .session = accountHttp,
                                .googleSignIn = googleSignIn,
                                .configuration = configuration,
                                .system = information});
    slack = std::make_unique<SlackManager>(SlackManager::Neighbours{
        .tokens = *tokens,
        .settings = storage.settings,
        .debugLog = storage.debugLog,
        .session = http,
        .configuration = configuration,
    });
    contextProcessor = std::make_unique<ContextProcessor>(ContextProcessor::Neighbours{
        .applications = applications,
        .settings = storage.settings,
        .files = files,
        .directory = *slack,
        .clock = m_clock,
        .debugLog = storage.debugLog,
    });
    permissions = std::make_unique<PermissionsManager>(system, m_clock, m_mainThread, telemetry);
    client = std::make_unique<TranscriptionClient>(TranscriptionClient::Neighbours{
        .session = *dictationSession,
        .hedgeSession = *dictationHedgeSession,
        .clock = m_clock,
        .mainThread = m_mainThread,
        .telemetry = telemetry,
        .debugLog = storage.debugLog,
        .sources = {.settings = storage.settings,
                    .tokens = *tokens,
                    .configuration = configuration,
                    .focusedApplication = applications,
                    .inputDevice = inputDevice,
                    .system = information},
    });
    appState = std::make_unique<AppState>(AppStateNeighbours{
        .mainThread = m_mainThread,
        .clock = m_clock,
        .settings = storage.settings,
        .debugLog = storage.debugLog,
        .telemetry = telemetry,
        .permissions = *permissions,
        .auth = *auth,
        .hotkey = hotkey,
        .recorder = recorder,
        .client = *client,
        .contextProcessor = *contextProcessor,
        .injector = injector,
        .slack = *slack,
        .hud = hud,
        .clipboard = clipboard,
        .sounds = sounds,
        .haptics = haptics,
        .windows = windows,
        .systemEvents = systemEvents,
    });
    appState->bootstrap();
  }

 private:
  MainThread& m_mainThread;
  Clock& m_clock;

 protected:
  TestStorage storage{m_clock};
  TelemetryOnFakes telemetryOnFakes{m_mainThread, m_clock, storage};
  Telemetry& telemetry = telemetryOnFakes.telemetry;
  /// Apart from the session's, so that signing out drops no event that a test asks for.
  TelemetryOnFakes accountTelemetry{m_mainThread, m_clock, storage};
  FakeSecretBackend secrets;
  bool isTokenExpected = false;  ///< the keyring hasn't answered when the session starts
  FakeSystemPermissions system;
  FakeHttpSession http{m_mainThread, m_clock};
  FakeHttpSession hedgeHttp{m_mainThread, m_clock};
  FakeHttpSession accountHttp{m_mainThread, m_clock};
  /// What dictations go over; a test with a network of its own says so before startUp().
  HttpSession* dictationSession = &http;
  HttpSession* dictationHedgeSession = &hedgeHttp;
  FakeFocusedApplication applications;
  FakeInputDevice inputDevice;
  FakeAudioInput audioInput;
  FakeClipboard clipboard{m_clock};
  FakeKeyPoster keyPoster{m_clock};
  FakeSecureInput secureInput;
  FakeSounds sounds;
  FakeHaptics haptics;
  FakeApplicationWindows windows;
  FakeSystemEvents systemEvents;
  FakeRecordingIndicator hud;
  const SystemInformation information{u"12.8.0"_s, u"1.2.0"_s, u"34"_s};
  DeploymentConfiguration configuration = DeploymentConfiguration::builtIn();
  FakeWebAuthentication browser{m_mainThread};
  FakeSecureRandom random;
  GoogleSignIn googleSignIn{{.browser = browser,
                             .session = accountHttp,
                             .random = random,
                             .configuration = configuration}};
  FakeKeyEventSource keySource;
  FakeLoneModifier loneModifier;
  HotkeyManager hotkey{keySource,    loneModifier,     m_clock,
                       m_mainThread, storage.settings, storage.debugLog};
  AudioRecorder recorder{audioInput, m_mainThread, m_clock, storage.debugLog};
  FakeFileTagLookup files;
  TextInjector injector{clipboard, keyPoster,    secureInput,     system,
                        m_clock,   m_mainThread, storage.debugLog};
  std::unique_ptr<SecureTokenStore> tokens;
  std::unique_ptr<AuthManager> auth;
  std::unique_ptr<SlackManager> slack;
  std::unique_ptr<ContextProcessor> contextProcessor;
  std::unique_ptr<PermissionsManager> permissions;
  std::unique_ptr<TranscriptionClient> client;
  std::unique_ptr<AppState> appState;
};

}  // namespace vemo
