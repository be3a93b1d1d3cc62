#include "session/AppState.h"

#include <QCoreApplication>

#include "account/AuthManager.h"
#include "base/Text.h"
#include "desktop/ConcealedText.h"
#include "desktop/HotkeyManager.h"
#include "desktop/PermissionsManager.h"
#include "integrations/SlackManager.h"
#include "ports/RecordingIndicator.h"
#include "ports/SystemEvents.h"
#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"
#include "telemetry/Telemetry.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

AppState::AppState(AppStateNeighbours neighbours)
    : m_with(neighbours),
      m_history(neighbours.clock, neighbours.settings),
      m_sounds(neighbours.sounds, neighbours.settings),
      m_lastStopAt(neighbours.clock.monotonicTime()),
      m_tasks(neighbours.mainThread) {
  if (!m_with.settings.contains(keys::isEnabled)) m_with.settings.set(keys::isEnabled, true);
  m_isEnabled = m_with.settings.get(keys::isEnabled, true);
  signInMayHaveChanged();
  m_observations.push_back(m_with.permissions.changed.observe([this] { changed.notify(); }));
  m_observations.push_back(m_with.auth.changed.observe([this] {
    signInMayHaveChanged();
    changed.notify();
  }));
}

/// Whose session shows only after the start finds the history then, and goes on recording.
void AppState::signInMayHaveChanged() {
  const bool isSignedIn = m_with.auth.isSignedIn();
  if (isSignedIn && !m_wasSignedIn) m_history.load();
  m_wasSignedIn = isSignedIn;
  if (m_with.auth.isSessionUnknown() || !std::exchange(m_beganWithSessionUnknown, false)) return;
  if (isSignedIn || m_phase.kind != Phase::Kind::Recording) return;
  cancelActiveWork();
  refuseWithoutSignIn();
}

AppState::~AppState() {
  m_with.hotkey.onPushToTalkDown = nullptr;
  m_with.hotkey.onPushToTalkUp = nullptr;
  m_with.hotkey.onToggleTrigger = nullptr;
  m_with.recorder.onLevel = nullptr;
  m_with.recorder.onAudioChunk = nullptr;
  m_with.permissions.onAXTrustGained = nullptr;
  m_with.permissions.onAXTrustLost = nullptr;
  m_with.systemEvents.onDidWake = nullptr;
  m_with.systemEvents.onDidBecomeActive = nullptr;
}

void AppState::bootstrap() {
  m_with.permissions.refresh();
  m_with.permissions.startPolling();

  m_with.hotkey.onPushToTalkDown = [this] { handlePushToTalkDown(); };
  m_with.hotkey.onPushToTalkUp = [this] { handlePushToTalkUp(); };
  m_with.hotkey.onToggleTrigger = [this] { handleToggleTrigger(); };
  m_with.recorder.onLevel = [this](float level) { m_with.hud.setLevel(level); };
  m_with.recorder.onAudioChunk = [this](QByteArray wavData, int index) {
    handleAudioChunk(std::move(wavData), index);
  };
  m_with.permissions.onAXTrustGained = [this] { installHotkeyIfNeeded(); };
  m_with.permissions.onAXTrustLost = [this] {
    m_with.debugLog(u"Accessibility trust lost — tearing down the event tap"_s);
    m_with.hotkey.removeTap();
  };

  installHotkeyIfNeeded();
  m_with.systemEvents.onDidWake = [this] { installHotkeyIfNeeded(); };
  m_with.systemEvents.onDidBecomeActive = [this] {
    if (!m_with.auth.isSignedIn()) return;
    m_tasks.start(
        [&](std::stop_token stop) { return m_with.auth.refreshProfile(std::move(stop)); });
  };

  if (m_isEnabled) m_with.hud.hideNow();
  promptForMissingPermissions();
}

void AppState::promptForMissingPermissions() {
  if (m_with.permissions.micStatus() == MicStatus::NotDetermined)
    m_with.permissions.requestMicrophone();
  if (m_with.permissions.axTrusted()) return;
  m_with.debugLog(u"launch: Accessibility not granted — prompting"_s);
  m_with.permissions.promptAccessibility();
}

void AppState::installHotkeyIfNeeded() {
  const bool isTrusted = m_with.permissions.axTrusted();
  const bool isTapEnabled = m_with.hotkey.isTapEnabled();
  m_with.debugLog(u"installHotkeyIfNeeded: axTrusted=%1 micGranted=%2 tapActive=%3"_s.arg(
      trueOrFalse(isTrusted), trueOrFalse(m_with.permissions.micStatus() == MicStatus::Granted),
      trueOrFalse(isTapEnabled)));
  if (isTrusted && !isTapEnabled) m_with.hotkey.installTap();
}

void AppState::handlePushToTalkDown() {
  m_with.debugLog(u"handlePushToTalkDown: isEnabled=%1 phase=%2 choice=%3"_s.arg(
      trueOrFalse(m_isEnabled), m_phase.name(),
      m_with.settings.get(keys::pushToTalkHotkeyChoice, u"eitherOption"_s)));
  if (!m_isEnabled || m_phase != Phase::idle()) return;
  m_isPushToTalkRecording = true;
  startRecording();
}

void AppState::handlePushToTalkUp() {
  m_with.debugLog(u"handlePushToTalkUp: phase=%1 isPushToTalkRecording=%2"_s.arg(
      m_phase.name(), trueOrFalse(m_isPushToTalkRecording)));
  if (m_phase != Phase::recording() || !m_isPushToTalkRecording) return;
  m_isPushToTalkRecording = false;
  stopRecording();
}

void AppState::handleToggleTrigger() {
  m_with.debugLog(u"handleToggleTrigger: isEnabled=%1 phase=%2 choice=%3"_s.arg(
      trueOrFalse(m_isEnabled), m_phase.name(),
      m_with.settings.get(keys::toggleHotkeyChoice, u"fnGlobe"_s)));
  if (m_isEnabled) toggleFromButton();
}

void AppState::toggleFromButton() {
  if (m_phase == Phase::recording()) {
    m_isPushToTalkRecording = false;
    stopRecording();
  } else if (m_phase == Phase::idle()) {
    m_isPushToTalkRecording = false;
    startRecording();
  }
}

void AppState::setEnabled(bool isEnabled) {
  m_isEnabled = isEnabled;
  changed.notify();
  m_with.settings.set(keys::isEnabled, isEnabled);
  if (!isEnabled) cancelActiveWork();
  m_with.hud.hideNow();
}

void AppState::cancelActiveWork() {
  std::exchange(m_recordingCapTask, {}).cancel();
  std::exchange(m_transcriptionTask, {}).cancel();
  cancelChunkTasks();
  m_chunkTranscripts.clear();
  releaseAudioPipes();
  ++m_generation;
  if (m_with.recorder.isRecording()) m_with.recorder.stop();
  setPhase(Phase::idle());
}

QString readyStatusText() {
  return QCoreApplication::translate("Dictation", "Ready");
}

QString AppState::statusText() const {
  switch (m_phase.kind) {
    case Phase::Kind::Recording:
      return QCoreApplication::translate("Dictation", "Recording…");
    case Phase::Kind::Transcribing:
      return QCoreApplication::translate("Dictation", "Transcribing…");
    case Phase::Kind::Injecting:
      return QCoreApplication::translate("Dictation", "Inserting…");
    case Phase::Kind::Error:
      return m_phase.message;
    case Phase::Kind::Idle:
      break;
  }
  if (!m_isEnabled) return QCoreApplication::translate("Dictation", "Disabled");
  if (m_with.permissions.micStatus() != MicStatus::Granted)
    return QCoreApplication::translate("Dictation", "Microphone access needed");
  if (!m_with.permissions.axTrusted())
    return QCoreApplication::translate("Dictation", "Accessibility access needed");
  if (!m_with.auth.isSignedIn() && !m_with.auth.isSessionUnknown())
    return QCoreApplication::translate("Dictation", "Sign in to connect");
  return readyStatusText();
}

bool AppState::copyTranscript(const QString& text) {
  if (text.isEmpty()) return false;
  m_with.telemetry.track(TelemetryEvent::transcriptCopied());
  if (m_with.clipboard.replace(concealedText(text, ClipboardStay::UntilReplaced))) return true;
  m_with.debugLog(u"copy: the clipboard can't be written"_s);
  return false;
}

void AppState::signIn() {
  cancelSignIn();
  m_signInTask = m_tasks.start(
      [&](std::stop_token stop) { return m_with.auth.signInWithGoogle(std::move(stop)); });
}

void AppState::cancelSignIn() {
  m_signInTask.cancel();
}

void AppState::clearLocalUserData() {
  m_with.auth.signOut();
  m_history.clear();
  m_with.settings.remove(keys::customDictionaryEntries);
  m_with.settings.remove(keys::customShortcutEntries);
  m_with.settings.remove(keys::streamingDictationEnabled);
  m_with.settings.remove(keys::streamingDictationMaxSessionSec);
  m_with.settings.remove(keys::streamingDictationFetchedAt);
  m_with.slack.disconnect();
  m_with.debugLog(
      u"auth: signed out — cleared local transcripts, dictionary, shortcuts, and Slack state"_s);
  changed.notify();
}

void AppState::setPhase(Phase phase) {
  if (phase == m_phase) return;
  m_phase = std::move(phase);
  changed.notify();
}

}  // namespace vemo
