// Turns finished audio into text through the service.
//
// Three operations on one machinery: a request makes up to three attempts, and each attempt may
// send a second copy of itself (HedgedSend). A transport error is tried again at once; a status of
// 500 and above gets a pause first; every other answer is final.
//
// Main thread only. Holds no state between requests, so operations may overlap. A requested stop
// ends an operation with Cancelled; it returns only after every copy of the request has ended. The
// client outlives its operations, and what it refers to outlives the client. Failures are values.
#pragma once

#include <QByteArray>
#include <QString>
#include <expected>
#include <stop_token>

#include "base/Clock.h"
#include "base/MainThread.h"
#include "base/Task.h"
#include "ports/HttpSession.h"
#include "transcription/DictationRequestBuilder.h"
#include "transcription/TranscriptionError.h"

namespace vemo {

class DebugLog;
class Telemetry;

class TranscriptionClient {
 public:
  /// Everybody that the client works with.
  struct Neighbours {
    HttpSession& session;
    HttpSession& hedgeSession;  ///< second copies go here; shares no connection with `session`
    Clock& clock;
    MainThread& mainThread;
    Telemetry& telemetry;
    DebugLog& debugLog;
    DictationRequestBuilder::Sources sources;
  };

  using Result = std::expected<QString, TranscriptionError>;

  explicit TranscriptionClient(Neighbours neighbours);

  /// The text of a whole recording.
  Task<Result> transcribe(QByteArray wavData, std::stop_token stop);

  /// The raw text of one stretch of a long recording.
  Task<Result> transcribeChunk(QByteArray wavData, QString sessionId, QString language,
                               QString model, QString mode, int chunkIndex, std::stop_token stop);

  /// The formatted text of a recording whose chunks have been transcribed. `totalDuration` is in
  /// seconds.
  Task<Result> finalizeDictation(QString sessionId, QString rawTranscript, QString language,
                                 QString model, QString formatMode, double totalDuration,
                                 std::stop_token stop);

 private:
  struct Operation;

  Task<Result> run(Operation operation, HttpRequest request, std::stop_token stop);
  Result judge(const Operation& operation, const HttpResult& answer,
               Clock::MonotonicTime startedAt) const;

  const Neighbours m_neighbours;
  const DictationRequestBuilder m_requests;
};

}  // namespace vemo
