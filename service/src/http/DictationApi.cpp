#include "http/DictationApi.h"

#include <algorithm>
#include <boost/json.hpp>
#include <cmath>

#include "accounts/Secrets.h"
#include "formatting/SmartFormatter.h"
#include "http/JsonBody.h"

namespace vemo::service {

namespace {

namespace json = boost::json;
using boost::beast::http::verb;

constexpr std::size_t transcriptLimit = 4 * 1024 * 1024;
constexpr TextLimits anyText{.least = 0, .most = transcriptLimit};

Answer transcription(std::string_view text) {
  return {.status = 200,
          .body = json::serialize(json::object{{"status", "success"}, {"transcription", text}})};
}

unsigned statusOf(EngineError::Kind kind) {
  switch (kind) {
    case EngineError::Kind::Unsupported:
      return 422;
    case EngineError::Kind::Failed:
      return 502;
    case EngineError::Kind::TimedOut:
      return 504;
    case EngineError::Kind::Cancelled:
      return clientClosedRequest;
    case EngineError::Kind::Busy:
      return 503;
  }
  return 500;
}

enum class TextFormat { Raw, Smart };

/// "smart" and nothing else asks for formatting.
TextFormat textFormatNamed(std::string_view name) {
  return name == "smart" ? TextFormat::Smart : TextFormat::Raw;
}

std::string written(std::string text, TextFormat format, EngineKind::Output output) {
  if (format == TextFormat::Smart && output == EngineKind::Output::BareWords)
    return formatSmart(text);
  return text;
}

std::int64_t wordsIn(std::string_view text) {
  std::int64_t words = 0;
  bool inWord = false;
  for (const char letter : text) {
    const bool isSpace = letter == ' ' || (letter >= '\t' && letter <= '\r');
    if (!isSpace && !inWord) ++words;
    inWord = !isSpace;
  }
  return words;
}

/// How long the client says that the whole recording is; a day at most.
std::chrono::milliseconds durationIn(const json::object& object) {
  const auto* value = object.if_contains("totalDuration");
  boost::system::error_code error;
  const double seconds = value ? value->to_number<double>(error) : 0;
  if (error || !(seconds > 0)) return {};
  return std::chrono::milliseconds(std::llround(std::min(seconds, 86'400.0) * 1000));
}

std::string countingKey(const RequestKey& key) {
  return secretHash({reinterpret_cast<const char*>(key.data()), key.size()});
}

/// Without a name, every request is one of its own.
std::string countingKey(std::string_view name, std::initializer_list<std::string_view> parts) {
  return name.empty() ? randomSecret() : countingKey(requestKey(parts));
}

}  // namespace

DictationApi::DictationApi(const EngineKind& engine, RecognitionQueue& queue, UsageMeter* usage,
                           boost::asio::any_io_executor networkThread, const Limits& limits)
    : m_engine(engine),
      m_queue(queue),
      m_usage(usage),
      m_limits(limits),
      m_equalRequests(std::move(networkThread), limits) {}

void DictationApi::addTo(Router& router) {
  constexpr std::string_view tooLong = "The recording is too long.";
  router.add({verb::get, "/health", Access::Everybody, 0,
              [this](Request, std::stop_token, AnswerCompletion done) { done(health()); }});
  router.add({verb::get, "/languages", Access::Everybody, 0,
              [this](Request, std::stop_token, AnswerCompletion done) { done(languages()); }});
  router.add({verb::post, "/desktop/dictate", Access::AnyToken, m_limits.bodyBytes,
              [this](Request request, std::stop_token stop, AnswerCompletion done) {
                dictate(Piece::Whole, std::move(request), std::move(stop), std::move(done));
              },
              tooLong});
  router.add({verb::post, "/desktop/dictate/chunk", Access::AnyToken, m_limits.bodyBytes,
              [this](Request request, std::stop_token stop, AnswerCompletion done) {
                dictate(Piece::Chunk, std::move(request), std::move(stop), std::move(done));
              },
              tooLong});
  router.add({verb::post, "/desktop/dictate/finalize", Access::AnyToken,
              std::min(m_limits.bodyBytes, transcriptLimit),
              [this](const Request& request, std::stop_token, AnswerCompletion done) {
                finalize(request, std::move(done));
              }});
}

Answer DictationApi::health() const {
  const bool ready = m_queue.isReady();
  return {.status = ready ? 200U : 503U,
          .body = json::serialize(
              json::object{{"status", ready ? "ready" : "loading"}, {"engine", m_engine.name}})};
}

Answer DictationApi::languages() const {
  json::array list;
  for (const auto& language : m_engine.languages)
    list.push_back(json::object{{"name", language.name}, {"code", language.code}});
  return {.status = 200,
          .body = json::serialize(json::object{{"status", "success"}, {"languages", list}})};
}

void DictationApi::finalize(const Request& request, AnswerCompletion completion) {
  const auto object = jsonObjectIn(request.body);
  if (!object) return completion(errorAnswer(400, "The body is not a JSON object."));
  const auto* transcript = object->if_contains("rawTranscript");
  if (!transcript || !transcript->is_string())
    return completion(errorAnswer(400, "The body lacks the text rawTranscript."));
  const auto format = textFormatNamed(textIn(*object, "format_mode", anyText).value_or(""));
  const auto text = written(std::string(transcript->get_string()), format, m_engine.output);
  const auto session = textIn(*object, "sessionId", anyText).value_or("");
  // The recordings came before, piece by piece, some of them more than once.
  const UsageStep step{.words = wordsIn(text), .speech = durationIn(*object), .utterances = 1};
  count(request.caller, step,
        countingKey(session, {request.caller.token, request.target.path(), session, request.body}),
        transcription(text), std::move(completion));
}

void DictationApi::dictate(Piece piece, Request request, std::stop_token stop,
                           AnswerCompletion completion) {
  auto recording = Recording::fromWav(std::move(request.body));
  if (!recording) return completion(errorAnswer(400, recording.error()));
  if (recording->sampleCount() == 0) return completion(transcription(""));

  // The text of a chunk stays raw: it is formatted with its neighbours when the dictation ends.
  const auto format = piece == Piece::Chunk
                          ? TextFormat::Raw
                          : textFormatNamed(request.target.parameter("format_mode"));
  const auto language = request.target.parameter("language");
  const auto dictation = piece == Piece::Chunk ? request.target.parameter("session_id")
                                               : request.header("x-dictation-id");
  const auto index = piece == Piece::Chunk ? request.target.parameter("chunk_index") : "whole";
  const auto key =
      requestKey({request.caller.token, request.target.path(), dictation, index, language,
                  format == TextFormat::Smart ? "smart" : "raw", recording->wav()});
  const bool isNamed = !dictation.empty() && !index.empty();
  auto recognise = [this, recording = *std::move(recording), language, format, piece,
                    caller = std::move(request.caller),
                    counting = isNamed ? countingKey(key) : randomSecret()](
                       std::stop_token end, AnswerCompletion done) mutable {
    UsageStep step{.speech = recording.duration(), .utterances = 1};
    m_queue.submit(
        std::move(recording), {.language = std::move(language)}, std::move(end),
        [this, step, format, piece, caller = std::move(caller), counting = std::move(counting),
         done = std::move(done)](RecognitionQueue::Result result) mutable {
          if (!result)
            return done(errorAnswer(statusOf(result.error().kind), result.error().message));
          const auto text = written(*std::move(result), format, m_engine.output);
          step.words = wordsIn(text);
          // A chunk is one request more; what it holds is counted when its dictation ends.
          count(caller, piece == Piece::Chunk ? UsageStep{} : step, std::move(counting),
                transcription(text), std::move(done));
        });
  };
  // Without a name for the dictation and its piece, no copy can be told from a new request.
  if (!isNamed) return recognise(std::move(stop), std::move(completion));
  m_equalRequests.answer(key, std::move(stop), std::move(recognise), std::move(completion));
}

void DictationApi::count(const Caller& caller, const UsageStep& step, std::string key,
                         Answer answer, AnswerCompletion completion) {
  if (!m_usage || !caller.account) return completion(std::move(answer));
  m_usage->count(*caller.account, step, std::move(key),
                 [answer = std::move(answer), completion = std::move(completion)]() mutable {
                   completion(std::move(answer));
                 });
}

}  // namespace vemo::service
