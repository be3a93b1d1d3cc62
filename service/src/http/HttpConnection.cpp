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
/// What a refused sender may go on sending, in bodies of the largest size.
constexpr std::uint64_t discardedBodies = 4;

/// For co_await: the error becomes a value.
auto into(error_code& error) {
  return net::redirect_error(net::use_awaitable, error);
}

bool isHttpError(const error_code& error) {
  return error.category() == make_error_code(http::error::bad_target).category();
}

Answer parseFailure(const error_code& error, std::string_view tooLong) {
  if (error == http::error::header_limit || error == http::error::buffer_overflow)
    return errorAnswer(431, "The request's head is too long.");
  if (error == http::error::body_limit) return errorAnswer(413, tooLong);
  return errorAnswer(400, "The request cannot be read.");
}

/// The value that `work` gives its completion, on whichever thread.
template <typename Value, typename Work>
net::awaitable<Value> completed(Work work) {
  const auto executor = co_await net::this_coro::executor;
  co_return co_await net::async_initiate<decltype(net::use_awaitable), void(Value)>(
      [&work, executor](auto handler) {
        work([handler = std::move(handler),
              guard = net::make_work_guard(executor)](Value value) mutable {
          net::post(guard.get_executor(),
                    [handler = std::move(handler), value = std::move(value)]() mutable {
                      std::move(handler)(std::move(value));
                    });
        });
      },
      net::use_awaitable);
}

bool hasLeft(net::ip::tcp::socket& socket) {
  char byte = 0;
  error_code error;
  const auto count = socket.receive(net::buffer(&byte, 1), net::socket_base::message_peek, error);
  return count == 0 && error != net::error::would_block && error != net::error::try_again;
}

}  // namespace

HttpConnection::HttpConnection(net::ip::tcp::socket socket, const Limits& limits,
                               const Router& router, Admission& admission, AccessLog& log,
                               Ended ended)
    : m_stream(std::move(socket)),
      m_limits(limits),
      m_router(router),
      m_admission(admission),
      m_log(log),
      m_ended(std::move(ended)),
      m_buffer(bufferLimit) {
  error_code ignored;
  m_stream.socket().non_blocking(true, ignored);
  m_stream.socket().set_option(net::ip::tcp::no_delay(true), ignored);
  m_source = m_stream.socket().remote_endpoint(ignored).address().to_string();
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
    co_return co_await refuse(parseFailure(error, {}), 0);
  if (error) {
    if (error == beast::error::timeout) log(408);
    co_return Next::Close;
  }

  if (const auto answer = framingError(parser)) co_return co_await refuse(*answer, 0);
  const auto& head = parser.get();
  if (head.method() != http::verb::unknown) m_entry.method = http::to_string(head.method());
  m_entry.path = m_router.knownPath(head.target());
  const auto match = m_router.find(head.method(), head.target());
  m_stream.expires_never();
  auto request = match ? co_await admit(parser, *match) : std::unexpected(match.error());
  if (!request) {
    const bool bodyFollows = parser.chunked() || parser.content_length().value_or(0) > 0;
    if (bodyFollows) co_return co_await refuse(request.error(), stillToCome(parser));
    co_return co_await send(request.error(), parser.keep_alive());
  }

  if (beast::iequals(head[http::field::expect], "100-continue")) {
    constexpr std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
    co_await net::async_write(m_stream, net::buffer(goOn), into(error));
    if (error) co_return Next::Close;
  }
  parser.body_limit(match->route->bodyLimit);
  m_stream.expires_after(m_limits.bodyTime);
  if (!parser.is_done()) co_await http::async_read(m_stream, m_buffer, parser, into(error));
  m_entry.bodyBytes = parser.get().body().size();
  if (error == http::error::body_limit ||
      (isHttpError(error) && error != http::error::partial_message))
    co_return co_await refuse(parseFailure(error, match->route->tooLong), stillToCome(parser));
  if (error) {
    log(error == beast::error::timeout ? 408 : clientClosedRequest);
    co_return Next::Close;
  }

  const bool keepAlive = parser.keep_alive();
  // A waiting upload holds its body and nothing else of size.
  if (m_buffer.size() == 0) m_buffer.shrink_to_fit();
  m_stream.expires_never();
  request->body = std::move(parser.get().body());
  auto answer = co_await handle(*match->route, *std::move(request));
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

net::awaitable<std::expected<Request, Answer>> HttpConnection::admit(const Parser& parser,
                                                                     const Router::Match& match) {
  const auto& head = parser.get();
  auto caller = co_await completed<std::expected<Caller, Answer>>([&](auto completion) {
    m_admission.admit(head[http::field::authorization], match.route->access, std::move(completion));
  });
  if (!caller) co_return std::unexpected(std::move(caller).error());
  if (parser.content_length().value_or(0) > match.route->bodyLimit)
    co_return std::unexpected(errorAnswer(413, match.route->tooLong));
  co_return Request{.target = match.target,
                    .item = match.item,
                    .caller = *std::move(caller),
                    .headers = head,
                    .source = m_source};
}

/// Nothing when nobody can know, as in a chunked body.
std::uint64_t HttpConnection::stillToCome(const Parser& parser) const {
  const auto remaining = parser.content_length_remaining().value_or(0);
  return remaining - std::min<std::uint64_t>(remaining, m_buffer.size());
}

net::awaitable<Answer> HttpConnection::handle(const Route& route, Request request) {
  watchForLeaving();
  auto answer = co_await completed<Answer>([&](auto completion) {
    route.handler(std::move(request), m_stop.get_token(), std::move(completion));
  });
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
  response.set(http::field::content_type, answer.contentType);
  response.set(http::field::cache_control, "no-store");
  if (!answer.allow.empty()) response.set(http::field::allow, answer.allow);
  if (answer.status == 401) response.set(http::field::www_authenticate, "Bearer");
  if (!answer.contentRange.empty()) response.set(http::field::content_range, answer.contentRange);
  if (answer.status == 503 && !answer.retryAfter) answer.retryAfter = std::chrono::seconds(1);
  if (answer.retryAfter)
    response.set(http::field::retry_after, std::to_string(answer.retryAfter->count()));
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
