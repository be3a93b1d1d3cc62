#include "transcription/TranscriptionClient.h"

#include <QCoreApplication>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "storage/DebugLog.h"
#include "telemetry/Telemetry.h"
#include "transcription/DictationAnswer.h"
#include "transcription/HedgedSend.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int maximumAttempts = 3;

/// How long to wait before the next attempt; absent when the result is final. Only a server that
/// has answered with a failure of its own is given a pause.
std::optional<std::chrono::milliseconds> pauseBeforeRetry(const HttpResult& answer, int attempt) {
  if (attempt == maximumAttempts) return std::nullopt;
  if (!answer) return 0ms;
  if (answer->status.value_or(0) < 500) return std::nullopt;
  return 250ms * (1 << (attempt + 1));
}

QString addressForLog(const QUrl& url) {
  return url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo);
}

}  // namespace

/// What sets one operation apart from the others in the log, in messages and in events.
struct TranscriptionClient::Operation {
  QString name;
  QString label;        ///< name, with the chunk's number
  QString retrySuffix;  ///< ends the line about a retry
  QString refusal;      ///< begins the message of a status below 500 that came without one
  QString endpoint;
  bool logsResult = true;

  static Operation transcribe() {
    return {.name = u"transcribe"_s,
            .label = u"transcribe"_s,
            .retrySuffix = {},
            .refusal = QCoreApplication::translate("Dictation", "Request failed"),
            .endpoint = u"dictate"_s};
  }

  static Operation transcribeChunk(int index) {
    return {.name = u"transcribeChunk"_s,
            .label = u"transcribeChunk #%1"_s.arg(index),
            .retrySuffix = u" for chunk #%1"_s.arg(index),
            .refusal = QCoreApplication::translate("Dictation", "Chunk request failed"),
            .endpoint = u"dictate/chunk"_s,
            .logsResult = false};
  }

  static Operation finalizeDictation() {
    return {.name = u"finalizeDictation"_s,
            .label = u"finalizeDictation"_s,
            .retrySuffix = {},
            .refusal = QCoreApplication::translate("Dictation", "Finalize request failed"),
            .endpoint = u"dictate/finalize"_s};
  }
};

TranscriptionClient::TranscriptionClient(Neighbours neighbours)
    : m_neighbours(neighbours), m_requests(neighbours.sources) {}

Task<TranscriptionClient::Result> TranscriptionClient::transcribe(QByteArray wavData,
                                                                  std::stop_token stop) {
  const auto token = m_requests.token();
  if (!token) co_return std::unexpected(TranscriptionError::notConfigured());
  const auto request = m_requests.dictate(*token, wavData);
  if (!request) co_return std::unexpected(TranscriptionError::badResponse());
  m_neighbours.debugLog(
      u"transcribe: sending %1 bytes to %2 | lang=%3 model=%4 mode=%5 app=%6"_s.arg(
          QString::number(wavData.size()), addressForLog(request->http.url), request->language,
          request->model, request->mode, request->target.name));
  co_return co_await run(Operation::transcribe(), request->http, stop);
}

Task<TranscriptionClient::Result> TranscriptionClient::transcribeChunk(
    QByteArray wavData, QString sessionId, QString language, QString model, QString mode,
    int chunkIndex, std::stop_token stop) {
  const auto token = m_requests.token();
  if (!token) co_return std::unexpected(TranscriptionError::notConfigured());
  const auto request = m_requests.chunk(*token, {.wavData = wavData,
                                                 .sessionId = sessionId,
                                                 .language = language,
                                                 .model = model,
                                                 .mode = mode,
                                                 .index = chunkIndex});
  if (!request) co_return std::unexpected(TranscriptionError::badResponse());
  m_neighbours.debugLog(u"transcribeChunk: sending chunk #%1 (%2 bytes) to %3"_s.arg(
      QString::number(chunkIndex), QString::number(wavData.size()),
      addressForLog(request->http.url)));
  co_return co_await run(Operation::transcribeChunk(chunkIndex), request->http, stop);
}

Task<TranscriptionClient::Result> TranscriptionClient::finalizeDictation(
    QString sessionId, QString rawTranscript, QString language, QString model, QString formatMode,
    double totalDuration, std::stop_token stop) {
  const auto token = m_requests.token();
  if (!token) co_return std::unexpected(TranscriptionError::notConfigured());
  const auto request = m_requests.finalize(*token, {.sessionId = sessionId,
                                                    .rawText = rawTranscript,
                                                    .language = language,
                                                    .model = model,
                                                    .formatMode = formatMode,
                                                    .totalDuration = totalDuration});
  if (!request) co_return std::unexpected(TranscriptionError::badResponse());
  co_return co_await run(Operation::finalizeDictation(), request->http, stop);
}

Task<TranscriptionClient::Result> TranscriptionClient::run(Operation operation, HttpRequest request,
                                                           std::stop_token stop) {
  const auto& [session, hedgeSession, clock, mainThread, telemetry, debugLog, sources] =
      m_neighbours;
  const auto startedAt = clock.monotonicTime();
  for (int attempt = 1;; ++attempt) {
    if (stop.stop_requested()) co_return std::unexpected(TranscriptionError::cancelled());

    const auto now = std::chrono::floor<std::chrono::milliseconds>(clock.wallTime());
    request.setHeader("x-client-start-time"_ba,
                      QByteArray::number(qint64{now.time_since_epoch().count()}));
    HedgedSend hedgedSend(session, hedgeSession, clock, mainThread, debugLog);
    const HttpResult answer = co_await hedgedSend.send(request, operation.label, stop);
    Result result = judge(operation, answer, startedAt);

    const auto pause = pauseBeforeRetry(answer, attempt);
    const bool wasCancelled = !answer && answer.error().code == UrlError::Cancelled;
    if (!pause || wasCancelled) co_return result;
    if (*pause > 0ms) co_await clock.sleep(*pause, stop);
    debugLog(u"%1: retry %2 of %3%4"_s.arg(operation.name, QString::number(attempt + 1),
                                           QString::number(maximumAttempts),
                                           operation.retrySuffix));
  }
}

TranscriptionClient::Result TranscriptionClient::judge(const Operation& operation,
                                                       const HttpResult& answer,
                                                       Clock::MonotonicTime startedAt) const {
  auto& [name, label, retrySuffix, refusal, endpoint, logsResult] = operation;
  auto& telemetry = m_neighbours.telemetry;
  auto& debugLog = m_neighbours.debugLog;

  if (!answer) {
    const HttpError& error = answer.error();
    if (error.code == UrlError::Cancelled) return std::unexpected(TranscriptionError::cancelled());
    debugLog(u"%1: transport error: %2"_s.arg(name, error.description));
    telemetry.reportRequestResult(endpoint, std::nullopt, startedAt, error);
    return std::unexpected(TranscriptionError::network(error));
  }
  if (!answer->status) {
    debugLog(u"%1: non-HTTP response received"_s.arg(name));
    return std::unexpected(TranscriptionError::badResponse());
  }

  const int status = *answer->status;
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
      m_neighbours.clock.monotonicTime() - startedAt);
  debugLog(u"%1: HTTP %2 in %3ms, %4 bytes"_s.arg(label)
               .arg(status)
               .arg(elapsed.count())
               .arg(answer->body.size()));
  telemetry.reportRequestResult(endpoint, status, startedAt, std::nullopt);

  if (status == 401) return std::unexpected(TranscriptionError::unauthorized());
  if (status < 200 || status > 299) {
    const QString fallback =
        status < 500 ? refusal : QCoreApplication::translate("Dictation", "Server error");
    return std::unexpected(TranscriptionError::server(
        errorMessageIn(answer->body).value_or(u"%1 (HTTP %2)"_s.arg(fallback).arg(status))));
  }
  auto text = transcriptionIn(answer->body);
  if (!text) {
    debugLog(u"%1: failed to decode JSON response"_s.arg(name));
    return std::unexpected(TranscriptionError::badResponse());
  }
  if (logsResult)
    debugLog(u"%1: result %2 chars, %3 words"_s.arg(name)
                 .arg(characterCount(*text))
                 .arg(wordCount(*text)));
  return std::move(*text);
}

}  // namespace vemo
