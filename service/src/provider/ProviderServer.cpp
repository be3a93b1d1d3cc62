#include "provider/ProviderServer.h"

#include <boost/asio.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>

#include "http/Listening.h"
#include "provider/PeerLogin.h"

namespace vemo::service {

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using boost::system::error_code;
using net::ip::tcp;

/// Browsers connect ahead of time and send their request when the person does something.
constexpr std::chrono::seconds requestTime{10};
constexpr std::chrono::seconds answerTime{10};
constexpr std::chrono::milliseconds acceptPause{100};

auto into(error_code& error) {
  return net::redirect_error(net::use_awaitable, error);
}

/// The answer may come on another thread.
net::awaitable<LocalProvider::Answer> answerOf(LocalProvider& provider,
                                               const LocalProvider::Request& request) {
  const auto executor = co_await net::this_coro::executor;
  co_return co_await net::async_initiate<decltype(net::use_awaitable), void(LocalProvider::Answer)>(
      [&provider, &request, executor](auto handler) {
        provider.answer(
            request, [handler = std::move(handler),
                      work = net::make_work_guard(executor)](LocalProvider::Answer answer) mutable {
              net::post(work.get_executor(),
                        [handler = std::move(handler), answer = std::move(answer)]() mutable {
                          std::move(handler)(std::move(answer));
                        });
            });
      },
      net::use_awaitable);
}

}  // namespace

ProviderServer::ProviderServer(net::io_context& io, AccessLog& log)
    : m_io(io), m_log(log), m_acceptor(io) {}

std::expected<void, std::string> ProviderServer::listen(const std::string& address,
                                                        std::uint16_t port) {
  return listenOn(m_acceptor, address, port);
}

std::string ProviderServer::address() const {
  return addressOf(m_acceptor);
}

void ProviderServer::serve(LocalProvider& provider) {
  net::co_spawn(m_io, accept(provider), net::detached);
}

void ProviderServer::stop() {
  error_code ignored;
  m_acceptor.close(ignored);
  for (const auto& stream : m_streams) stream->close();
}

net::awaitable<void> ProviderServer::accept(LocalProvider& provider) {
  while (m_acceptor.is_open()) {
    error_code error;
    auto socket = co_await m_acceptor.async_accept(into(error));
    if (error) {
      net::steady_timer timer(m_io, acceptPause);
      if (m_acceptor.is_open()) co_await timer.async_wait(into(error));
      continue;
    }
    if (m_streams.size() >= mostConnections || !isOfOwnLogin(socket)) continue;
    const auto stream = std::make_shared<beast::tcp_stream>(std::move(socket));
    m_streams.insert(stream);
    net::co_spawn(m_io, exchange(provider, stream), [this, stream](std::exception_ptr failure) {
      if (failure) m_log.note("a connection of the local sign-in failed");
      stream->close();
      m_streams.erase(stream);
    });
  }
}

net::awaitable<void> ProviderServer::exchange(LocalProvider& provider, Stream stream) {
  beast::flat_buffer buffer(largestHead + FormFields::largest);
  http::request_parser<http::string_body> parser;
  parser.header_limit(largestHead);
  parser.body_limit(FormFields::largest);
  error_code error;
  stream->expires_after(requestTime);
  co_await http::async_read(*stream, buffer, parser, into(error));
  if (error) co_return;

  AccessLog::Entry entry;
  const auto began = std::chrono::steady_clock::now();
  const auto& request = parser.get();
  if (request.method() != http::verb::unknown) entry.method = http::to_string(request.method());
  entry.path = LocalProvider::knownPath(request);
  entry.bodyBytes = request.body().size();
  stream->expires_never();
  auto answer = co_await answerOf(provider, request);
  answer.keep_alive(false);
  answer.prepare_payload();
  stream->expires_after(answerTime);
  co_await http::async_write(*stream, answer, into(error));
  stream->socket().shutdown(tcp::socket::shutdown_both, error);
  entry.status = answer.result_int();
  entry.duration = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - began);
  m_log.write(entry);
}

}  // namespace vemo::service
