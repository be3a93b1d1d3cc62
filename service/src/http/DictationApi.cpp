#include "http/DictationApi.h"

#include <algorithm>
#include <boost/json.hpp>

#include "formatting/SmartFormatter.h"

namespace vemo::service {

namespace {

namespace json = boost::json;
using boost::beast::http::verb;

constexpr std::size_t transcriptLimit = 4 * 1024 * 1024;

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

}  // namespace

DictationApi::DictationApi(Engine engine, RecognitionQueue& queue,
                           boost::asio::any_io_executor networkThread, const Limits& limits)
    : m_engine(std::move(engine)),
      m_queue(queue),
      m_limits(limits),
      m_equalRequests(std::move(networkThread), limits) {}

void DictationApi::addTo(Router& router) {
  constexpr std::string_view tooLong = "The recording is too long.";
  router.add({verb::get, "/health", Access::Everybody, 0,
              [this](Request, std::stop_token, AnswerCompletion done) { done(health()); }});
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
              [this](Request request, std::stop_token, AnswerCompletion done) {
                done(finalize(request.body));
              }});
}

Answer DictationApi::health() const {
  const bool ready = m_queue.isReady();
  return {.status = ready ? 200U : 503U,
          .body = json::serialize(
              json::object{{"status", ready ? "ready" : "loading"}, {"engine", m_engine.name}})};
}

Answer DictationApi::finalize(const std::string& body) const {
  boost::system::error_code error;
  const auto parsed = json::parse(body, error);
  const auto* object = error ? nullptr : parsed.if_object();
  if (!object) return errorAnswer(400, "The body is not a JSON object.");
  const auto* transcript = object->if_contains("rawTranscript");
  if (!transcript || !transcript->is_string())
    return errorAnswer(400, "The body lacks the text rawTranscript.");
  const auto* format = object->if_contains("format_mode");
  const auto mode =
      format && format->is_string() ? textFormatNamed(format->get_string()) : TextFormat::Raw;
  return transcription(written(std::string(transcript->get_string()), mode, m_engine.output));
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
  auto recognise = [this, recording = *std::move(recording), language, format](
                       std::stop_token end, AnswerCompletion done) mutable {
    m_queue.submit(std::move(recording), {.language = std::move(language)}, std::move(end),
                   [done = std::move(done), format,
                    output = m_engine.output](RecognitionQueue::Result result) mutable {
                     done(result
                              ? transcription(written(*std::move(result), format, output))
                              : errorAnswer(statusOf(result.error().kind), result.error().message));
                   });
  };
  // Without a name for the dictation and its piece, no copy can be told from a new request.
  if (dictation.empty() || index.empty()) return recognise(std::move(stop), std::move(completion));
  m_equalRequests.answer(key, std::move(stop), std::move(recognise), std::move(completion));
}

}  // namespace vemo::service
