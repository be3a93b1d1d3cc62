// From a text to the application in front: shaping, pasting, history.

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

namespace {

QString lengthBucket(double seconds) {
  if (seconds < 10) return u"lt10s"_s;
  if (seconds < 60) return u"10to60s"_s;
  if (seconds < 300) return u"1to5m"_s;
  return u"gt5m"_s;
}

}  // namespace

Task<> AppState::deliverTranscript(QString text, Generation generation, std::stop_token stop) {
  if (generation != m_generation) co_return;
  const auto endQuietly = [this] {
    setPhase(Phase::idle());
    m_with.hud.hide();
  };
  if (!m_isEnabled) {
    endQuietly();
    m_with.telemetry.track(u"dictation_cancelled"_s,
                           {{u"reason"_s, u"disabled"_s}, {u"seconds"_s, m_lastRecordingSeconds}});
    co_return;
  }
  m_history.setLastTranscript(text);
  m_with.debugLog(u"transcript OK: %1 chars"_s.arg(characterCount(text)));
  const QString transcript = trimmed(text);
  if (transcript.isEmpty()) {
    endQuietly();
    m_with.telemetry.track(u"dictation_failed"_s,
                           {{u"reason"_s, u"empty_transcript"_s}, {u"chunked"_s, m_lastWasChunked}},
                           EventClass::Essential);
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
  const QString message = *failure + u" — use Copy Last Transcript"_s;
  failDictation(message, message);
  const bool isSecureInput = failure->contains(u"secure input", Qt::CaseInsensitive);
  m_with.telemetry.track(u"text_insertion_failed"_s,
                         {{u"reason"_s, isSecureInput ? u"secure_input"_s : u"paste_failed"_s}},
                         EventClass::Essential);
}

void AppState::dictationCompleted(const QString& processed) {
  setPhase(Phase::idle());
  m_sounds.playStop();
  m_with.hud.hideNow();

  const auto& settings = m_with.settings;
  const auto latency = m_with.clock.monotonicTime() - m_lastStopAt;
  m_with.telemetry.track(
      u"dictation_completed"_s,
      {
          {u"lengthBucket"_s, lengthBucket(m_lastRecordingSeconds)},
          {u"seconds"_s, m_lastRecordingSeconds},
          {u"words"_s, wordCount(processed)},
          {u"language"_s, settings.get(keys::dictationLanguage, u"en"_s)},
          {u"model"_s, config::currentLanguage(settings).model},
          {u"outputMode"_s, config::requestOutputMode(settings)},
          {u"chunked"_s, m_lastWasChunked},
          {u"streamed"_s, m_lastWasStreamed},
          {u"latencyMs"_s,
           qint64{std::chrono::duration_cast<std::chrono::milliseconds>(latency).count()}},
      });
  m_with.telemetry.recordFirstDictation();
  m_history.recordDictation(processed);
  changed.notify();
  m_tasks.start([&](std::stop_token stop) { return m_with.auth.refreshProfile(std::move(stop)); });
}

}  // namespace vemo
