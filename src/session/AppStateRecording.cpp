// The start of a recording with its gates, its stop, and the chunks that leave in between.

#include <QCoreApplication>
#include <QUuid>

#include "account/AuthManager.h"
#include "base/Text.h"
#include "desktop/PermissionsManager.h"
#include "ports/ApplicationWindows.h"
#include "ports/Haptics.h"
#include "ports/RecordingIndicator.h"
#include "session/AppState.h"
#include "storage/Config.h"
#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"
#include "telemetry/Telemetry.h"
#include "transcription/TranscriptionClient.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr double minAudioSeconds = 0.3;
constexpr auto debounceInterval = 300ms;
constexpr auto maxRecordingDuration = 7200s;
constexpr auto permissionPromptInterval = 30s;
/// Of the recorder's meter; lies at -52.74 dBFS.
constexpr float silenceThreshold = 0.02F;

}  // namespace

void AppState::startRecording() {
  if (!m_isEnabled || m_phase != Phase::idle()) return;
  if (!passesSignInGate() || !passesPermissionGate() || !passesDebounce()) return;

  m_currentSessionId = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  m_chunkTranscripts.clear();
  cancelChunkTasks();
  m_deferredChunks.clear();
  m_lastWasStreamed = false;

  if (const auto started = m_with.recorder.start(); !started) {
    releaseAudioPipes();
    const QString message = started.error().errorDescription;
    failDictation(message);
    m_with.debugLog(u"recording failed to start: "_s + message);
    m_with.telemetry.track(TelemetryEvent::dictationFailed(u"recorder_start", {}));
    return;
  }
  recordingStarted();
}

bool AppState::passesSignInGate() {
  m_beganWithSessionUnknown = m_with.auth.isSessionUnknown();
  if (m_with.auth.isSignedIn() || m_beganWithSessionUnknown) return true;
  refuseWithoutSignIn();
  return false;
}

void AppState::refuseWithoutSignIn() {
  m_with.hud.showError(QCoreApplication::translate("Dictation", "Please sign in to dictate"));
  m_with.windows.bringForward();
  m_with.debugLog(u"recording blocked — user not signed in"_s);
}

bool AppState::passesPermissionGate() {
  auto& permissions = m_with.permissions;
  const bool isMicGranted = permissions.micStatus() == MicStatus::Granted;
  if (isMicGranted && permissions.axTrusted()) return true;

  const auto now = m_with.clock.monotonicTime();
  const bool prompts =
      !m_lastPermissionPrompt || now - *m_lastPermissionPrompt > permissionPromptInterval;
  if (prompts) m_lastPermissionPrompt = now;
  if (!isMicGranted) {
    m_with.hud.showError(QCoreApplication::translate("Dictation", "Microphone access needed"));
    if (prompts) {
      permissions.requestMicrophone();
      permissions.openSettings(QString::fromUtf16(microphonePane));
    }
  } else {
    m_with.hud.showError(QCoreApplication::translate("Dictation", "Accessibility access needed"));
    if (prompts) {
      permissions.promptAccessibility();
      permissions.openSettings(QString::fromUtf16(accessibilityPane));
    }
  }
  m_with.debugLog(u"recording blocked — missing permissions"_s);
  return false;
}

bool AppState::passesDebounce() const {
  return !m_lastStopTime || m_with.clock.monotonicTime() - *m_lastStopTime > debounceInterval;
}

void AppState::recordingStarted() {
  setPhase(Phase::recording());
  m_with.hud.showRecording();
  m_with.haptics.alignment();
  armRecordingCap();
  m_sounds.playStart();
  m_with.debugLog(u"recording started (session: %1)"_s.arg(m_currentSessionId));
  m_dictationMode = m_isPushToTalkRecording ? u"hold"_s : u"toggle"_s;
  const QString shortcut =
      m_isPushToTalkRecording ? m_with.settings.get(keys::pushToTalkHotkeyChoice, u"eitherOption"_s)
                              : m_with.settings.get(keys::toggleHotkeyChoice, u"fnGlobe"_s);
  m_with.telemetry.track(TelemetryEvent::dictationStarted(m_dictationMode, shortcut));
}

void AppState::armRecordingCap() {
  m_recordingCapTask.cancel();
  m_recordingCapTask =
      m_tasks.start([&](std::stop_token stop) { return stopAtRecordingCap(std::move(stop)); });
}

Task<> AppState::stopAtRecordingCap(std::stop_token stop) {
  if (co_await m_with.clock.sleep(maxRecordingDuration, stop) == SleepEnd::Cancelled) co_return;
  if (stop.stop_requested() || m_phase != Phase::recording()) co_return;
  m_with.debugLog(u"recording cap reached — auto-stopping"_s);
  stopRecording();
}

void AppState::stopRecording() {
  if (m_phase != Phase::recording()) return;
  m_recordingCapTask.cancel();
  const float peakLevel = m_with.recorder.peakLevel();
  auto result = m_with.recorder.stop();
  m_with.recorder.setPcmSink(nullptr);
  const auto now = m_with.clock.monotonicTime();
  m_lastStopTime = now;

  const auto endQuietly = [this] {
    releaseAudioPipes();
    setPhase(Phase::idle());
    m_with.hud.hide();
  };
  if (!m_isEnabled) {
    endQuietly();
    m_with.telemetry.track(TelemetryEvent::dictationDisabled({}));
    return;
  }
  if (!result) return endQuietly();

  m_lastRecordingSeconds = result->totalDuration;
  m_lastStopAt = now;
  m_lastWasChunked = result->isChunked;
  m_with.debugLog(u"recording stopped — isChunked: %1 (~%2s)"_s.arg(trueOrFalse(m_lastWasChunked))
                      .arg(m_lastRecordingSeconds, 0, 'f', 2));

  if (m_lastRecordingSeconds < minAudioSeconds) {
    endQuietly();
    m_with.telemetry.track(
        TelemetryEvent::dictationTooShort(m_lastRecordingSeconds, m_lastWasChunked));
    return;
  }
  if (peakLevel < silenceThreshold) {
    releaseAudioPipes();
    failDictation(
        QCoreApplication::translate("Dictation", "No audio detected — check your microphone"));
    m_with.telemetry.track(TelemetryEvent::dictationFailed(u"no_audio", m_lastWasChunked));
    return;
  }
  chooseTranscriptionPath(*std::move(result));
}

void AppState::chooseTranscriptionPath(AudioStopResult result) {
  if (m_stream) {
    beginStreamFinish(m_stream, std::move(result));
  } else if (result.isChunked) {
    beginChunkedFinalize(std::move(result));
  } else if (result.wavData) {
    beginSingleShotTranscription(*std::move(result.wavData));
  } else {
    setPhase(Phase::idle());
    m_with.hud.hide();
  }
}

void AppState::releaseAudioPipes() {
  m_with.recorder.setPcmSink(nullptr);
  if (const auto stream = std::exchange(m_stream, nullptr)) stream->cancel();
}

void AppState::cancelChunkTasks() {
  for (const auto& task : std::exchange(m_chunkTasks, {})) task.cancel();
}

void AppState::setStream(std::shared_ptr<StreamingDictationSession> stream) {
  m_stream = std::move(stream);
}

void AppState::handleAudioChunk(QByteArray wavData, int index) {
  if (m_phase != Phase::recording()) return;
  if (m_stream)
    m_deferredChunks.emplace_back(std::move(wavData), index);
  else
    uploadChunk(std::move(wavData), index);
}

void AppState::uploadChunk(QByteArray wavData, int index) {
  m_chunkTasks.push_back(m_tasks.start([&](std::stop_token stop) {
    return transcribeChunk(std::move(wavData), index, m_currentSessionId, std::move(stop));
  }));
}

Task<> AppState::transcribeChunk(QByteArray wavData, int index, QString sessionId,
                                 std::stop_token stop) {
  const auto& language = config::currentLanguage(m_with.settings);
  const auto text = co_await m_with.client.transcribeChunk(
      std::move(wavData), sessionId, config::effectiveLanguageCode(language), language.model,
      config::requestOutputMode(m_with.settings), index, stop);
  if (!text) {
    m_with.debugLog(u"chunk #%1 transcription error: "_s.arg(index) +
                    text.error().diagnosticText());
  } else if (!stop.stop_requested() && sessionId == m_currentSessionId) {
    m_chunkTranscripts.store(index, *text);
    m_with.debugLog(u"chunk #%1 transcribed OK (%2 chars)"_s.arg(index).arg(characterCount(*text)));
  }
}

}  // namespace vemo
