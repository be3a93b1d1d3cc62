#include "http/HttpConnection.h"

#include <boost/asio.hpp>
#include <boost/beast/http.hpp>

namespace vemo::service {

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using boost::system::error_code;

constexpr std::size_t bufferLimit = 128 * 1024;
constexpr std::size_t transcriptLimit = 4 * 1024 * 1024;
/// What a refused sender may go on sending, in bodies of the largest size.
constexpr std::uint64_t discardedBodies = 4;

/// For co_await: the error becomes a value.
auto into(error_code& error) {
  return net::redirect_error(net::use_awaitable, error);
}

bool isHttpError(const error_code& error) {
  return error.category() == make_error_code(http::error::bad_target).category();
}

Answer parseFailure(const error_code& error) {
  if (error == http::error::header_limit || error == http::error::buffer_overflow)
    return errorAnswer(431, "The request's head is too long.");
  if (error == http::error::body_limit) return errorAnswer(413, "The recording is too long.");
  return errorAnswer(400, "The request cannot be read.");
}

bool hasLeft(net::ip::tcp::socket& socket) {
  char byte = 0;
  error_code error;
  const auto count = socket.receive(net::buffer(&byte, 1), net::socket_base::message_peek, error);
  return count == 0 && error != net::error::would_block && error != net::error::try_again;
}

}  // namespace

HttpConnection::HttpConnection(net::ip::tcp::socket socket, const Limits& limits, DictationApi& api,
                               AccessLog& log, Ended ended)
    : m_stream(std::move(socket)),
      m_limits(limits),
      m_api(api),
      m_log(log),
      m_ended(std::move(ended)),
      m_buffer(bufferLimit) {
  error_code ignored;
  m_stream.socket().non_blocking(true, ignored);
  m_stream.socket().set_option(net::ip::tcp::no_delay(true), ignored);
}

void HttpConnection::start() {
  spawn(&HttpConnection::run);
}

void HttpConnection::turnAway() {
  m_turnedAway = true;
  spawn(&HttpConnection::runTurnedAway);
}

void HttpConnection::spawn(net::awaitable<void> (HttpConnection::*life)()) {
  auto self = shared_from_this();
  net::co_spawn(
      m_stream.get_executor(), [self, life] { return (self.get()->*life)(); },
      [self](std::exception_ptr failure) {
        // Memory that ran out: this connection ends, the others go on.
        if (failure) self->m_log.note("a connection failed");
        self->m_stream.close();
        self->m_ended(self.get());
      });
}

void HttpConnection::finish() {
  m_finishing = true;
  if (m_idle) m_stream.close();
}

void HttpConnection::abort() {
  m_stop.request_stop();
  m_stream.close();
}

net::awaitable<void> HttpConnection::run() {
  while (co_await waitForRequest()) {
    if (co_await serve() == Next::Close) break;
  }
  error_code ignored;
  m_stream.socket().shutdown(net::socket_base::shutdown_both, ignored);
}

net::awaitable<void> HttpConnection::runTurnedAway() {
  m_began = std::chrono::steady_clock::now();
  constexpr auto anything = std::numeric_limits<std::uint64_t>::max();
  co_await refuse(errorAnswer(503, "The service is busy. Try again in a moment."), anything);
}

net::awaitable<bool> HttpConnection::waitForRequest() {
  if (m_finishing) co_return false;
  if (m_buffer.size() > 0) co_return true;
  m_idle = true;
  m_stream.expires_after(m_limits.idleTime);
  error_code error;
  const auto count = co_await m_stream.async_read_some(m_buffer.prepare(4096), into(error));
  m_buffer.commit(count);
  m_idle = false;
  co_return !error;
}

net::awaitable<HttpConnection::Next> HttpConnection::serve() {
  m_began = std::chrono::steady_clock::now();
  m_entry = {};
  m_stop = {};
  Parser parser;
  parser.header_limit(m_limits.headerBytes);
  parser.body_limit(boost::none);

  error_code error;
  m_stream.expires_after(m_limits.headerTime);
  co_await http::async_read_header(m_stream, m_buffer, parser, into(error));
  if (isHttpError(error) && error != http::error::end_of_stream &&
      error != http::error::partial_message)
    co_return co_await refuse(parseFailure(error), 0);
  if (error) {
    if (error == beast::error::timeout) log(408);
    co_return Next::Close;
  }

  if (const auto answer = framingError(parser)) co_return co_await refuse(*answer, 0);
  const auto request = admit(parser);
  if (!request) {
    const bool bodyFollows = parser.chunked() || parser.content_length().value_or(0) > 0;
    if (bodyFollows) co_return co_await refuse(request.error(), stillToCome(parser));
    co_return co_await send(request.error(), parser.keep_alive());
  }

  if (beast::iequals(parser.get()[http::field::expect], "100-continue")) {
    constexpr std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
    co_await net::async_write(m_stream, net::buffer(goOn), into(error));
    if (error) co_return Next::Close;
  }
  parser.body_limit(bodyLimit(request->target.route->endpoint));
  m_stream.expires_after(m_limits.bodyTime);
  if (!parser.is_done()) co_await http::async_read(m_stream, m_buffer, parser, into(error));
  m_entry.bodyBytes = parser.get().body().size();
  if (error == http::error::body_limit ||
      (isHttpError(error) && error != http::error::partial_message))
    co_return co_await refuse(parseFailure(error), stillToCome(parser));
  if (error) {
    log(error == beast::error::timeout ? 408 : clientClosedRequest);
    co_return Next::Close;
  }

  const bool keepAlive = parser.keep_alive();
  // A waiting upload holds its body and nothing else of size.
  if (m_buffer.size() == 0) m_buffer.shrink_to_fit();
  m_stream.expires_never();
  auto answer = co_await recognise(*request, std::move(parser.get().body()));
  if (answer.status == clientClosedRequest) {
    log(answer.status);
    co_return Next::Close;
  }
  co_return co_await send(std::move(answer), keepAlive);
}

/// What makes it doubtful where the request ends; nothing after it may be taken for another one.
std::optional<Answer> HttpConnection::framingError(const Parser& parser) const {
  const auto& head = parser.get();
  if (head.version() != 10 && head.version() != 11)
    return errorAnswer(505, "Only HTTP/1.1 is spoken here.");
  if (head.count(http::field::transfer_encoding) == 0) return std::nullopt;
  if (parser.chunked() && head.version() == 11 && head.count(http::field::content_length) == 0)
    return std::nullopt;
  return errorAnswer(400, "The request cannot be read.");
}

std::expected<AdmittedRequest, Answer> HttpConnection::admit(const Parser& parser) {
  const auto& head = parser.get();
  if (head.method() != http::verb::unknown) m_entry.method = http::to_string(head.method());
  const auto request = m_api.admit({.method = head.method(),
                                    .target = head.target(),
                                    .authorization = head[http::field::authorization],
                                    .dictationId = head["x-dictation-id"]});
  if (const auto asked = parseTarget(head.target())) m_entry.path = asked->route->path;
  if (!request) return request;
  if (parser.content_length().value_or(0) > bodyLimit(request->target.route->endpoint))
    return std::unexpected(errorAnswer(413, "The recording is too long."));
  return request;
}

/// Nothing when nobody can know, as in a chunked body.
std::uint64_t HttpConnection::stillToCome(const Parser& parser) const {
  const auto remaining = parser.content_length_remaining().value_or(0);
  return remaining - std::min<std::uint64_t>(remaining, m_buffer.size());
}

std::size_t HttpConnection::bodyLimit(Endpoint endpoint) const {
  switch (endpoint) {
    case Endpoint::Health:
      return 0;
    case Endpoint::Dictate:
    case Endpoint::DictateChunk:
      return m_limits.bodyBytes;
    case Endpoint::DictateFinalize:
      return std::min(m_limits.bodyBytes, transcriptLimit);
  }
  return 0;
}

net::awaitable<Answer> HttpConnection::recognise(const AdmittedRequest& request, std::string body) {
  const auto executor = co_await net::this_coro::executor;
  watchForLeaving();
  auto answer = co_await net::async_initiate<decltype(net::use_awaitable), void(Answer)>(
      [this, &request, &body, executor](auto handler) {
        m_api.answer(request, std::move(body), m_stop.get_token(),
                     [handler = std::move(handler),
                      work = net::make_work_guard(executor)](Answer result) mutable {
                       net::post(work.get_executor(), [handler = std::move(handler),
                                                       result = std::move(result)]() mutable {
                         std::move(handler)(std::move(result));
                       });
                     });
      },
      net::use_awaitable);
  error_code ignored;
  m_stream.socket().cancel(ignored);
  co_return answer;
}

/// A pipelined request ends the watch: what comes after it can't be seen without taking it.
void HttpConnection::watchForLeaving() {
  if (m_buffer.size() > 0) return;
  m_stream.socket().async_wait(
      net::socket_base::wait_read,
      [self = shared_from_this(), stop = m_stop](const error_code& error) mutable {
        if (!error && hasLeft(self->m_stream.socket())) stop.request_stop();
      });
}

net::awaitable<HttpConnection::Next> HttpConnection::refuse(Answer answer,
                                                            std::uint64_t stillToCome) {
  co_await send(std::move(answer), false);
  co_await discardInput(stillToCome);
  co_return Next::Close;
}

/// Many clients look at their answer only once they have sent everything, and take a connection
/// that ends before for a lost one. Closing with input unread makes the kernel reset the
/// connection, and the answer may be lost too.
net::awaitable<void> HttpConnection::discardInput(std::uint64_t expected) {
  if (m_finishing) co_return;
  m_idle = true;
  const std::uint64_t limit = discardedBodies * m_limits.bodyBytes;
  m_stream.expires_after(m_limits.refusedTime);
  co_await discard(std::min(expected, limit));
  error_code ignored;
  m_stream.socket().shutdown(net::socket_base::shutdown_send, ignored);
  co_await discard(limit - std::min(expected, limit));
}

net::awaitable<void> HttpConnection::discard(std::uint64_t count) {
  std::array<char, 16 * 1024> dropped;
  error_code error;
  while (!error && count > 0) {
    const auto read = co_await m_stream.async_read_some(net::buffer(dropped), into(error));
    count -= std::min<std::uint64_t>(count, read);
  }
}

net::awaitable<HttpConnection::Next> HttpConnection::send(Answer answer, bool keepAlive) {
  keepAlive = keepAlive && !m_finishing;
  http::response<http::string_body> response(static_cast<http::status>(answer.status), 11);
  response.set(http::field::content_type, "application/json");
  response.set(http::field::cache_control, "no-store");
  if (!answer.allow.empty()) response.set(http::field::allow, answer.allow);
  if (answer.status == 401) response.set(http::field::www_authenticate, "Bearer");
  if (answer.status == 503) response.set(http::field::retry_after, "1");
  response.keep_alive(keepAlive);
  response.body() = std::move(answer.body);
  response.prepare_payload();

  error_code error;
  m_stream.expires_after(m_limits.answerTime);
  co_await http::async_write(m_stream, response, into(error));
  log(answer.status);
  co_return !error && keepAlive ? Next::Serve : Next::Close;
}

void HttpConnection::log(unsigned status) {
  m_entry.status = status;
  m_entry.duration = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - m_began);
  m_log.write(m_entry);
}

}  // namespace vemo::service
