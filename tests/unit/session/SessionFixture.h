// A whole session on fakes: AppState with its real neighbours, over ports that a test drives.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "account/AuthManager.h"
#include "base/Json.h"
#include "desktop/HotkeyManager.h"
#include "desktop/PermissionsManager.h"
#include "desktop/TextInjector.h"
#include "fakes/FakeApplicationWindows.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeClipboard.h"
#include "fakes/FakeClock.h"
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
#include "fakes/FakeSounds.h"
#include "fakes/FakeSystemEvents.h"
#include "fakes/FakeSystemPermissions.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "integrations/SlackManager.h"
#include "ports/SystemInformation.h"
#include "session/AppState.h"
#include "session/DictationRemoteControl.h"
#include "shaping/ContextProcessor.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "transcription/TranscriptionClient.h"

namespace vemo {

using namespace std::chrono_literals;

inline const QString dictatePath = u"/desktop/dictate"_s;
inline const QString chunkPath = u"/desktop/dictate/chunk"_s;
inline const QString finalizePath = u"/desktop/dictate/finalize"_s;

inline QByteArray success(const QString& text) {
  return compactJson(QJsonObject{{u"status"_s, u"success"_s}, {u"transcription"_s, text}});
}

class SessionFixture : public testing::Test {
 protected:
  SessionFixture() {
    secrets.add(u"brelmox.Vemo"_s, u"authToken"_s, "token");
    inputDevice.setTransport(InputTransport::Usb);
    sounds.resources = {u"vemo_start"_s, u"vemo_stop"_s};
  }

  /// Makes the session; what a test sets up before counts as there at the start.
  void startUp() {
    tokens =
        std::make_unique<SecureTokenStore>(std::vector<SecretBackend*>{&secrets}, storage.debugLog);
    auth = std::make_unique<AuthManager>(*tokens, storage.settings);
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
        .clock = clock,
        .debugLog = storage.debugLog,
    });
    permissions = std::make_unique<PermissionsManager>(system, clock, mainThread, telemetry);
    client = std::make_unique<TranscriptionClient>(TranscriptionClient::Neighbours{
        .session = *dictationSession,
        .hedgeSession = *dictationHedgeSession,
        .clock = clock,
        .mainThread = mainThread,
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
        .mainThread = mainThread,
        .clock = clock,
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
    mainThread.drain();
    hud.takeCalls();
    takeEvents();
  }

  void startRecording() {
    appState->handleToggleTrigger();
    mainThread.drain();
    ASSERT_EQ(appState->phase(), Phase::recording());
  }

  void stopRecording() {
    appState->handleToggleTrigger();
    mainThread.drain();
  }

  /// Lets the microphone hear a tone (or silence) while the time that it lasts passes.
  void hear(double seconds, std::int16_t amplitude = 8000) {
    constexpr std::size_t blockSize = 1600;  // 0.1 s
    auto left = static_cast<std::size_t>(std::llround(seconds * 16000));
    while (left > 0) {
      std::vector<std::int16_t> samples(std::min(blockSize, left));
      for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 2 ? amplitude : -amplitude;
      audioInput.deliver(samples);
      clock.advance(std::chrono::microseconds(samples.size() * 1'000'000 / 16000));
      left -= samples.size();
    }
  }

  /// Records and stops, with the answer at hand.
  void dictate(const QString& answer, double seconds = 1.0) {
    http.answer(dictatePath, 200, success(answer));
    startRecording();
    hear(seconds);
    stopRecording();
  }

  /// Lets a paste come to its end and the clipboard come back.
  void finishPaste() { clock.advance(1s); }

  /// Everything that has ever been written to the clipboard as text.
  QStringList pastedTexts() const {
    QStringList texts;
    for (const auto& write : clipboard.writes()) {
      if (const QString text = plainTextOf(write); !text.isEmpty()) texts.append(text);
    }
    return texts;
  }

  /// The events since the last time that this was asked, as "name {props}".
  std::vector<std::string> takeEvents() {
    std::vector<std::string> events;
    for (; m_seenEvents < telemetry.queue().size(); ++m_seenEvents) {
      const auto& event = telemetry.queue()[m_seenEvents].event;
      events.push_back(event.name().toStdString() + ' ' + compactJson(event.props()).toStdString());
    }
    return events;
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  TelemetryOnFakes telemetryOnFakes{mainThread, clock, storage};
  Telemetry& telemetry = telemetryOnFakes.telemetry;
  FakeSecretBackend secrets;
  FakeSystemPermissions system;
  FakeHttpSession http{mainThread, clock};
  FakeHttpSession hedgeHttp{mainThread, clock};
  /// What dictations go over; a test with a network of its own says so before startUp().
  HttpSession* dictationSession = &http;
  HttpSession* dictationHedgeSession = &hedgeHttp;
  FakeFocusedApplication applications;
  FakeInputDevice inputDevice;
  FakeAudioInput audioInput;
  FakeClipboard clipboard{clock};
  FakeKeyPoster keyPoster{clock};
  FakeSecureInput secureInput;
  FakeSounds sounds;
  FakeHaptics haptics;
  FakeApplicationWindows windows;
  FakeSystemEvents systemEvents;
  FakeRecordingIndicator hud;
  const SystemInformation information{u"12.8.0"_s, u"1.2.0"_s, u"34"_s};
  const DeploymentConfiguration configuration = DeploymentConfiguration::builtIn();
  FakeKeyEventSource keySource;
  FakeLoneModifier loneModifier;
  HotkeyManager hotkey{keySource,  loneModifier,     clock,
                       mainThread, storage.settings, storage.debugLog};
  AudioRecorder recorder{audioInput, mainThread, clock, storage.debugLog};
  FakeFileTagLookup files;
  TextInjector injector{clipboard, keyPoster,  secureInput,     system,
                        clock,     mainThread, storage.debugLog};
  std::unique_ptr<SecureTokenStore> tokens;
  std::unique_ptr<AuthManager> auth;
  std::unique_ptr<SlackManager> slack;
  std::unique_ptr<ContextProcessor> contextProcessor;
  std::unique_ptr<PermissionsManager> permissions;
  std::unique_ptr<TranscriptionClient> client;
  std::unique_ptr<AppState> appState;

 private:
  std::size_t m_seenEvents = 0;
};

}  // namespace vemo
