#include "speech/OpenAiEngine.h"

#include <openssl/rand.h>

#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/asio.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/json.hpp>
#include <optional>

#include "setup/SecretFile.h"
#include "web/WebServer.h"

namespace vemo::service {

namespace {

namespace net = boost::asio;
namespace http = boost::beast::http;

constexpr std::size_t largestAnswer = 4 * 1024 * 1024;

using Result = std::expected<std::string, EngineError>;

Result failed(std::string message) {
  return std::unexpected(EngineError{EngineError::Kind::Failed, std::move(message)});
}

std::string randomBoundary() {
  std::array<unsigned char, 16> bytes{};
  RAND_bytes(bytes.data(), static_cast<int>(bytes.size()));
  std::string text = "vemo-";
  boost::algorithm::hex_lower(bytes.begin(), bytes.end(), std::back_inserter(text));
  return text;
}

/// The primary subtag, where the client's name of the language has one that others know.
std::optional<std::string_view> languageCode(std::string_view language) {
  const auto primary = language.substr(0, language.find('-'));
  const bool isCode = (primary.size() == 2 || primary.size() == 3) &&
                      std::ranges::all_of(primary, [](char c) { return c >= 'a' && c <= 'z'; });
  return isCode ? std::optional(primary) : std::nullopt;
}

std::string field(std::string_view boundary, std::string_view name, std::string_view value) {
  return std::string("--")
      .append(boundary)
      .append("\r\nContent-Disposition: form-data; name=\"")
      .append(name)
      .append("\"\r\n\r\n")
      .append(value)
      .append("\r\n");
}

Result readAnswer(const http::response<http::string_body>& answer) {
  const auto status = answer.result_int();
  if (status == 401 || status == 403)
    return failed("The speech server does not accept this service's key.");
  if (status == 404)
    return failed("The speech server does not know the configured model or address.");
  if (status == 413) return failed("The recording is too long for the speech server.");
  if (status == 429) return failed("The speech server is busy. Try again later.");
  const auto code = " (HTTP " + std::to_string(status) + ").";
  if (status >= 500) return failed("The speech server failed" + code);
  if (status < 200 || status > 299) return failed("The speech server refused the recording" + code);

  boost::system::error_code error;
  const auto json = boost::json::parse(answer.body(), error);
  const auto* object = error ? nullptr : json.if_object();
  const auto* text = object ? object->if_contains("text") : nullptr;
  if (!text || !text->is_string())
    return failed("The speech server's answer could not be understood.");
  return std::string(text->get_string());
}

Result transportFailure(const boost::system::system_error& failure) {
  const auto& code = failure.code();
  if (code.category() == net::error::get_ssl_category())
    return failed("The speech server's certificate is not trusted, or it does not speak TLS.");
  if (code == net::error::host_not_found || code == net::error::host_not_found_try_again)
    return failed("The speech server's name is not known.");
  if (code == net::error::connection_refused) return failed("The speech server is not running.");
  if (code == http::error::body_limit) return failed("The speech server's answer is too long.");
  return failed("The connection to the speech server failed.");
}

}  // namespace

struct OpenAiEngine::Server {
  std::unique_ptr<WebServer> web;
  std::string key;

  template <typename Stream>
  net::awaitable<Result> exchange(Stream& stream, const Recording& recording,
                                  const std::string& before, const std::string& after,
                                  const std::string& boundary);
  net::awaitable<Result> request(const Recording& recording, std::string before, std::string after,
                                 std::string boundary);
};

template <typename Stream>
net::awaitable<Result> OpenAiEngine::Server::exchange(Stream& stream, const Recording& recording,
                                                      const std::string& before,
                                                      const std::string& after,
                                                      const std::string& boundary) {
  http::request<http::empty_body> head(http::verb::post, web->path() + "/v1/audio/transcriptions",
                                       11);
  head.set(http::field::host, web->hostHeader());
  head.set(http::field::user_agent, "vemo-service");
  head.set(http::field::accept, "application/json");
  head.set(http::field::content_type, "multipart/form-data; boundary=" + boundary);
  if (!key.empty()) head.set(http::field::authorization, "Bearer " + key);
  head.content_length(before.size() + recording.wav().size() + after.size());
  head.keep_alive(false);
  http::request_serializer<http::empty_body> serializer(head);
  co_await http::async_write_header(stream, serializer, net::use_awaitable);

  // The recording goes out from where it lies. A server may answer, and close, before it has taken
  // everything, so a failed send is judged by what can still be read.
  const std::array<net::const_buffer, 3> body = {net::buffer(before), net::buffer(recording.wav()),
                                                 net::buffer(after)};
  boost::system::error_code sendError;
  co_await net::async_write(stream, body, net::redirect_error(net::use_awaitable, sendError));

  boost::beast::flat_buffer buffer;
  http::response_parser<http::string_body> parser;
  parser.body_limit(largestAnswer);
  co_await http::async_read(stream, buffer, parser, net::use_awaitable);
  co_return readAnswer(parser.get());
}

net::awaitable<Result> OpenAiEngine::Server::request(const Recording& recording, std::string before,
                                                     std::string after, std::string boundary) {
  const auto exchangeOver = [&](auto& stream) {
    return exchange(stream, recording, before, after, boundary);
  };
  co_return co_await web->connected(exchangeOver);
}

OpenAiEngine::OpenAiEngine(OpenAiSettings settings) : m_settings(std::move(settings)) {}

OpenAiEngine::~OpenAiEngine() = default;

std::expected<void, std::string> OpenAiEngine::load() {
  auto web = WebServer::at(m_settings.address, m_settings.certificateAuthorities);
  if (!web) return std::unexpected("the address in [openai] " + web.error());
  auto server = std::make_unique<Server>();
  server->web = *std::move(web);

  if (!m_settings.keyFile.empty()) {
    const auto content = readSecretFile(m_settings.keyFile);
    if (!content) return std::unexpected(content.error());
    server->key = boost::algorithm::trim_copy(*content);
    const auto visible = [](char c) { return c > ' ' && c < 0x7f; };
    if (server->key.empty() || !std::ranges::all_of(server->key, visible))
      return std::unexpected(m_settings.keyFile.string() + ": holds no usable key");
  }
  m_server = std::move(server);
  return {};
}

Result OpenAiEngine::transcribe(const Recording& recording, const TranscriptionOptions& options,
                                std::stop_token stop) {
  const auto boundary = randomBoundary();
  std::string before =
      field(boundary, "model", m_settings.model) + field(boundary, "response_format", "json");
  if (const auto language = languageCode(options.language))
    before += field(boundary, "language", *language);
  before += "--" + boundary +
            "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"recording.wav\"\r\n"
            "Content-Type: audio/wav\r\n\r\n";
  std::string after = "\r\n--" + boundary + "--\r\n";

  std::optional<Result> result;
  net::io_context io;
  net::co_spawn(io, m_server->request(recording, std::move(before), std::move(after), boundary),
                [&result](std::exception_ptr failure, Result answer) {
                  try {
                    if (failure) std::rethrow_exception(failure);
                    result = std::move(answer);
                  } catch (const boost::system::system_error& error) {
                    result = transportFailure(error);
                  } catch (const std::exception&) {
                    result = failed("The recording could not be sent to the speech server.");
                  }
                });
  const std::stop_callback onStop(stop, [&io] { io.stop(); });
  io.run_for(m_settings.timeout);
  if (result) return *std::move(result);
  if (stop.stop_requested())
    return std::unexpected(EngineError{EngineError::Kind::Cancelled, "Cancelled"});
  return std::unexpected(
      EngineError{EngineError::Kind::TimedOut, "The speech server took too long."});
}

}  // namespace vemo::service
