// From a text to the application in front: shaping, pasting, history.

#include <QCoreApplication>

#include "account/AuthManager.h"
#include "base/Text.h"
#include "desktop/TextInjector.h"
#include "ports/RecordingIndicator.h"
#include "session/AppState.h"
#include "shaping/ContextProcessor.h"
#include "storage/Config.h"
#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"
#include "telemetry/Telemetry.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

Task<> AppState::deliverTranscript(QString text, Generation generation, std::stop_token stop) {
  if (generation != m_generation) co_return;
  const auto endQuietly = [this] {
    setPhase(Phase::idle());
    m_with.hud.hide();
  };
  if (!m_isEnabled) {
    endQuietly();
    m_with.telemetry.track(TelemetryEvent::dictationDisabled(m_lastRecordingSeconds));
    co_return;
  }
  m_history.setLastTranscript(text);
  m_with.debugLog(u"transcript OK: %1 chars"_s.arg(characterCount(text)));
  const QString transcript = trimmed(text);
  if (transcript.isEmpty()) {
    endQuietly();
    m_with.telemetry.track(TelemetryEvent::dictationFailed(u"empty_transcript", m_lastWasChunked));
    co_return;
  }

  const QString processed = m_with.contextProcessor.process(transcript);
  setPhase(Phase::injecting());
  const auto failure = co_await m_with.injector.inject(processed, stop);
  if (generation != m_generation) co_return;
  if (!failure) {
    dictationCompleted(processed);
    co_return;
  }
  const QString message =
      QCoreApplication::translate("Dictation", "%1 — use Copy Last Transcript")
          .arg(QCoreApplication::translate("Dictation", failure->toUtf8().constData()));
  failDictation(message, message);
  const bool isSecureInput = failure->contains(u"secure input", Qt::CaseInsensitive);
  m_with.telemetry.track(
      TelemetryEvent::textInsertionFailed(isSecureInput ? u"secure_input" : u"paste_failed"));
}

void AppState::dictationCompleted(const QString& processed) {
  setPhase(Phase::idle());
  m_sounds.playStop();
  m_with.hud.hideNow();

  const auto& settings = m_with.settings;
  const auto latency = m_with.clock.monotonicTime() - m_lastStopAt;
  m_with.telemetry.track(TelemetryEvent::dictationCompleted({
      .seconds = m_lastRecordingSeconds,
      .words = wordCount(processed),
      .language = settings.get(keys::dictationLanguage, u"en"_s),
      .model = config::currentLanguage(settings).model,
      .outputMode = config::requestOutputMode(settings),
      .isChunked = m_lastWasChunked,
      .isStreamed = m_lastWasStreamed,
      .latencyMs = std::chrono::duration_cast<std::chrono::milliseconds>(latency).count(),
  }));
  m_with.telemetry.recordFirstDictation();
  m_history.recordDictation(processed);
  changed.notify();
  m_tasks.start([&](std::stop_token stop) { return m_with.auth.refreshProfile(std::move(stop)); });
}

}  // namespace vemo
