// From a stopped recording to its text: the three paths, and every way to fail.

#include <QCoreApplication>

#include "account/AuthManager.h"
#include "audio/SpeechFormat.h"
#include "audio/WavFile.h"
#include "base/Text.h"
#include "ports/RecordingIndicator.h"
#include "session/AppState.h"
#include "storage/Config.h"
#include "storage/DebugLog.h"
#include "telemetry/Telemetry.h"
#include "transcription/TranscriptionClient.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr double minTailSeconds = 0.3;
constexpr auto streamFinishTimeout = 6s;
constexpr auto errorPhaseDuration = 2s;

double audioSeconds(const QByteArray& wavData) {
  const auto pcmSize = std::max<qsizetype>(0, wavData.size() - qsizetype{wavHeaderSize});
  return static_cast<double>(pcmSize) / speechFormat::bytesPerSecond;
}

TelemetryEvent::Literal failureReason(TranscriptionError::Kind kind) {
  switch (kind) {
    case TranscriptionError::Kind::Server:
      return u"server";
    case TranscriptionError::Kind::Network:
      return u"network";
    case TranscriptionError::Kind::NotConfigured:
      return u"not_signed_in";
    case TranscriptionError::Kind::Unauthorized:
      return u"unauthorized";
    case TranscriptionError::Kind::BadResponse:
      return u"bad_response";
    case TranscriptionError::Kind::Cancelled:
      return u"cancelled";
  }
  return u"other";
}

}  // namespace

AppState::Generation AppState::beginTranscribing() {
  const Generation generation = ++m_generation;
  setPhase(Phase::transcribing());
  m_with.hud.showTranscribing();
  m_transcriptionTask.cancel();
  return generation;
}

void AppState::beginSingleShotTranscription(QByteArray wavData) {
  const Generation generation = beginTranscribing();
  m_transcriptionTask = m_tasks.start([&](std::stop_token stop) {
    return transcribeWhole(std::move(wavData), generation, std::move(stop));
  });
}

Task<> AppState::transcribeWhole(QByteArray wavData, Generation generation, std::stop_token stop) {
  const auto text = co_await m_with.client.transcribe(std::move(wavData), stop);
  if (stop.stop_requested()) co_return;
  if (text)
    co_await deliverTranscript(*text, generation, stop);
  else
    failTranscription(text.error(), generation);
}

void AppState::beginChunkedFinalize(AudioStopResult result) {
  const Generation generation = beginTranscribing();
  m_transcriptionTask = m_tasks.start([&](std::stop_token stop) {
    return finalizeChunks(std::move(result), m_currentSessionId, generation, std::move(stop));
  });
}

Task<> AppState::finalizeChunks(AudioStopResult result, QString sessionId, Generation generation,
                                std::stop_token stop) {
  const auto& language = config::currentLanguage(m_with.settings);
  const QString languageCode = config::effectiveLanguageCode(language);

  if (result.wavData && audioSeconds(*result.wavData) >= minTailSeconds) {
    const auto tail = co_await m_with.client.transcribeChunk(
        *std::move(result.wavData), sessionId, languageCode, language.model,
        config::requestOutputMode(m_with.settings), result.nextChunkIndex, stop);
    if (stop.stop_requested()) co_return;
    if (!tail) {
      failTranscription(tail.error(), generation);
      co_return;
    }
    if (generation != m_generation) co_return;
    m_chunkTranscripts.store(result.nextChunkIndex, *tail);
  }

  const auto chunkTasks = m_chunkTasks;
  for (const auto& task : chunkTasks) co_await task.finished();
  if (stop.stop_requested() || generation != m_generation) co_return;

  const QString stitched = m_chunkTranscripts.stitched();
  if (stitched.isEmpty()) {
    co_await deliverTranscript({}, generation, stop);
    co_return;
  }
  const auto text = co_await m_with.client.finalizeDictation(
      sessionId, stitched, languageCode, language.model, QString::fromUtf16(smartFormatMode),
      result.totalDuration, stop);
  if (stop.stop_requested()) co_return;
  if (text)
    co_await deliverTranscript(*text, generation, stop);
  else
    failTranscription(text.error(), generation);
}

void AppState::beginStreamFinish(std::shared_ptr<StreamingDictationSession> stream,
                                 AudioStopResult result) {
  const Generation generation = beginTranscribing();
  m_transcriptionTask = m_tasks.start([&](std::stop_token stop) {
    return finishStream(std::move(stream), std::move(result), generation, std::move(stop));
  });
}

Task<> AppState::finishStream(std::shared_ptr<StreamingDictationSession> stream,
                              AudioStopResult result, Generation generation, std::stop_token stop) {
  const auto text = co_await stream->finish(streamFinishTimeout, stop);
  if (stop.stop_requested() || generation != m_generation || m_stream != stream) co_return;
  m_stream = nullptr;
  if (!text) {
    fallBackFromStream(std::move(result));
    co_return;
  }
  m_deferredChunks.clear();
  m_lastWasStreamed = true;
  m_with.debugLog(u"streaming: transcript OK (%1 chars)"_s.arg(characterCount(*text)));
  co_await deliverTranscript(*text, generation, stop);
}

void AppState::fallBackFromStream(AudioStopResult result) {
  const auto deferredChunks = std::exchange(m_deferredChunks, {});
  chooseTranscriptionPath(std::move(result));
  // The finalize task has not run yet, so it finds these uploads and waits for them.
  for (const auto& [wavData, index] : deferredChunks) uploadChunk(wavData, index);
  m_with.telemetry.track(TelemetryEvent::dictationStreamFallback(u"after_stop"));
}

void AppState::failTranscription(const TranscriptionError& error, Generation generation) {
  if (generation != m_generation) return;
  if (error.kind == TranscriptionError::Kind::Unauthorized && m_with.auth.isSignedIn()) {
    m_with.auth.signOut();
    m_with.auth.setLastError(
        QCoreApplication::translate("Account", "Session expired — sign in again"));
  }
  m_with.telemetry.track(
      TelemetryEvent::dictationFailed(failureReason(error.kind), m_lastWasChunked));
  failDictation(error.errorDescription(), {}, error.diagnosticText());
}

void AppState::failDictation(const QString& message, const std::optional<QString>& hudText,
                             const std::optional<QString>& logDetail) {
  setPhase(Phase::error(message));
  m_with.hud.showError(hudText.value_or(message));
  m_with.debugLog(u"error: "_s + logDetail.value_or(message));
  const Generation generation = ++m_generation;
  m_tasks.start([&](std::stop_token stop) { return leaveErrorPhase(generation, std::move(stop)); });
}

Task<> AppState::leaveErrorPhase(Generation generation, std::stop_token stop) {
  co_await m_with.clock.sleep(errorPhaseDuration, stop);
  if (stop.stop_requested() || generation != m_generation) co_return;
  if (m_phase.kind == Phase::Kind::Error) setPhase(Phase::idle());
}

}  // namespace vemo
