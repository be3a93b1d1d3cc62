#include "http/DictationApi.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/json.hpp>
#include <optional>

#include "formatting/SmartFormatter.h"

namespace vemo::service {

namespace {

namespace json = boost::json;

Answer transcription(std::string_view text) {
  return {200, json::serialize(json::object{{"status", "success"}, {"transcription", text}}), {}};
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

std::string written(std::string text, TextFormat format, EngineKind::Output output) {
  if (format == TextFormat::Smart && output == EngineKind::Output::BareWords)
    return formatSmart(text);
  return text;
}

/// Empty, which no token is, when there is none.
std::string tokenOf(std::string_view authorization) {
  constexpr std::string_view scheme = "Bearer ";
  if (!boost::algorithm::istarts_with(authorization, scheme)) return {};
  authorization.remove_prefix(scheme.size());
  return boost::algorithm::trim_copy(std::string(authorization));
}

/// None for a request that doesn't say which piece of which dictation it is.
std::optional<RequestKey> keyOf(const AdmittedRequest& request, TextFormat format,
                                const Recording& recording) {
  const auto& target = request.target;
  const bool isChunk = target.route->endpoint == Endpoint::DictateChunk;
  const std::string_view dictation = isChunk ? target.sessionId : request.dictationId;
  const std::string_view piece = isChunk ? target.chunkIndex : std::string_view("whole");
  if (dictation.empty() || piece.empty()) return std::nullopt;
  return requestKey({request.token, target.route->path, dictation, piece, target.language,
                     format == TextFormat::Smart ? "smart" : "raw", recording.wav()});
}

}  // namespace

Answer errorAnswer(unsigned status, std::string_view message) {
  return {status, json::serialize(json::object{{"status", "error"}, {"error", message}}), {}};
}

DictationApi::DictationApi(Engine engine, TokenFile& tokens, RecognitionQueue& queue,
                           boost::asio::any_io_executor networkThread, const Limits& limits)
    : m_engine(std::move(engine)),
      m_tokens(tokens),
      m_queue(queue),
      m_equalRequests(std::move(networkThread), limits) {}

std::expected<AdmittedRequest, Answer> DictationApi::admit(const RequestHead& head) {
  auto target = parseTarget(head.target);
  if (!target)
    return std::unexpected(target.error() == TargetError::Malformed
                               ? errorAnswer(400, "The address cannot be read.")
                               : errorAnswer(404, "There is nothing at this address."));
  if (head.method != target->route->method) {
    auto answer = errorAnswer(405, "This address does not take that method.");
    answer.allow = boost::beast::http::to_string(target->route->method);
    return std::unexpected(std::move(answer));
  }
  auto token = tokenOf(head.authorization);
  if (target->route->endpoint != Endpoint::Health && !m_tokens.accepts(token))
    return std::unexpected(errorAnswer(401, "A valid access token is needed."));
  return AdmittedRequest{*std::move(target), std::move(token), std::string(head.dictationId)};
}

void DictationApi::answer(const AdmittedRequest& request, std::string body, std::stop_token stop,
                          std::move_only_function<void(Answer)> completion) {
  switch (request.target.route->endpoint) {
    case Endpoint::Health:
      return completion(health());
    case Endpoint::DictateFinalize:
      return completion(finalize(body));
    case Endpoint::Dictate:
    case Endpoint::DictateChunk:
      return dictate(request, std::move(body), std::move(stop), std::move(completion));
  }
}

Answer DictationApi::health() const {
  const bool ready = m_queue.isReady();
  return {ready ? 200U : 503U,
          json::serialize(
              json::object{{"status", ready ? "ready" : "loading"}, {"engine", m_engine.name}}),
          {}};
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

void DictationApi::dictate(const AdmittedRequest& request, std::string body, std::stop_token stop,
                           std::move_only_function<void(Answer)> completion) {
  auto recording = Recording::fromWav(std::move(body));
  if (!recording) return completion(errorAnswer(400, recording.error()));
  if (recording->sampleCount() == 0) return completion(transcription(""));

  const auto& target = request.target;
  // The text of a chunk stays raw: it is formatted with its neighbours when the dictation ends.
  const auto format =
      target.route->endpoint == Endpoint::DictateChunk ? TextFormat::Raw : target.format;
  const auto key = keyOf(request, format, *recording);
  auto recognise = [this, recording = *std::move(recording), language = target.language, format](
                       std::stop_token end, EqualRequests::Completion done) mutable {
    m_queue.submit(std::move(recording), {.language = std::move(language)}, std::move(end),
                   [done = std::move(done), format,
                    output = m_engine.output](RecognitionQueue::Result result) mutable {
                     done(result
                              ? transcription(written(*std::move(result), format, output))
                              : errorAnswer(statusOf(result.error().kind), result.error().message));
                   });
  };
  if (!key) return recognise(std::move(stop), std::move(completion));
  m_equalRequests.answer(*key, std::move(stop), std::move(recognise), std::move(completion));
}

}  // namespace vemo::service
