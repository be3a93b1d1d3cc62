#include "http/HttpServer.h"

#include <boost/asio.hpp>

#include "http/Listening.h"

namespace vemo::service {

namespace {

namespace net = boost::asio;
using boost::system::error_code;
using net::ip::tcp;

/// Descriptors that ran out come back only when connections end.
constexpr std::chrono::milliseconds acceptPause{100};

/// Clients above the limit that are told so at the same time; more are cut without a word.
constexpr std::size_t turnedAwayAtOnce = 64;

}  // namespace

HttpServer::HttpServer(net::io_context& io, const Limits& limits, const Router& router,
                       Admission& admission, AccessLog& log)
    : m_io(io),
      m_limits(limits),
      m_router(router),
      m_admission(admission),
      m_log(log),
      m_acceptor(io),
      m_graceTimer(io) {}

std::expected<void, std::string> HttpServer::listen(const std::string& address,
                                                    std::uint16_t port) {
  if (auto listening = listenOn(m_acceptor, address, port); !listening) return listening;
  net::co_spawn(m_io, [this] { return accept(); }, net::detached);
  return {};
}

std::string HttpServer::address() const {
  return addressOf(m_acceptor);
}

net::awaitable<void> HttpServer::accept() {
  while (!m_stopping) {
    error_code error;
    auto socket = co_await m_acceptor.async_accept(net::redirect_error(net::use_awaitable, error));
    if (m_stopping) break;
    if (!error) {
      take(std::move(socket));
      continue;
    }
    net::steady_timer timer(m_io, acceptPause);
    co_await timer.async_wait(net::redirect_error(net::use_awaitable, error));
  }
}

void HttpServer::take(tcp::socket socket) {
  const bool isFull = m_connections.size() - m_turnedAway >= m_limits.connections;
  if (isFull && m_turnedAway >= turnedAwayAtOnce) return;
  const auto connection =
      std::make_shared<HttpConnection>(std::move(socket), m_limits, m_router, m_admission, m_log,
                                       [this](HttpConnection* ended) { connectionEnded(ended); });
  m_connections.insert(connection);
  if (!isFull) return connection->start();
  ++m_turnedAway;
  connection->turnAway();
}

void HttpServer::connectionEnded(HttpConnection* connection) {
  if (connection->isTurnedAway()) --m_turnedAway;
  m_connections.erase(connection->shared_from_this());
  if (!m_stopping || !m_connections.empty()) return;
  m_graceTimer.cancel();
  m_stopped();
}

void HttpServer::stop(std::function<void()> stopped) {
  if (m_stopping) return;
  m_stopping = true;
  m_stopped = std::move(stopped);
  error_code ignored;
  m_acceptor.close(ignored);
  for (const auto& connection : m_connections) connection->finish();
  if (m_connections.empty()) return m_stopped();
  m_graceTimer.expires_after(m_limits.shutdownTime);
  m_graceTimer.async_wait([this](const error_code& error) {
    if (error) return;
    for (const auto& connection : m_connections) connection->abort();
  });
}

}  // namespace vemo::service
