// Accepts connections and keeps count of them.
//
// Network thread only; owned by the program, and alive until the executor has run dry. `stop` takes
// no new connection, lets requests under way finish and cuts what is left after the limit.
// Connections above the limit are told 503 and closed: some at a time, the rest without a word.
#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <expected>
#include <memory>
#include <string>
#include <unordered_set>

#include "http/HttpConnection.h"

namespace vemo::service {

class HttpServer {
 public:
  HttpServer(boost::asio::io_context& io, const Limits& limits, const Router& router,
             Admission& admission, AccessLog& log);

  /// Binds, listens and starts to accept; the error is one line for the operator.
  std::expected<void, std::string> listen(const std::string& address, std::uint16_t port);
  /// "http://address:port", with the port that was chosen.
  std::string address() const;

  /// `stopped` is called when the last connection has ended.
  void stop(std::function<void()> stopped);

 private:
  boost::asio::awaitable<void> accept();
  void take(boost::asio::ip::tcp::socket socket);
  void connectionEnded(HttpConnection* connection);

  boost::asio::io_context& m_io;
  const Limits& m_limits;
  const Router& m_router;
  Admission& m_admission;
  AccessLog& m_log;
  boost::asio::ip::tcp::acceptor m_acceptor;
  boost::asio::steady_timer m_graceTimer;
  std::unordered_set<std::shared_ptr<HttpConnection>> m_connections;
  std::size_t m_turnedAway = 0;
  std::function<void()> m_stopped;
  bool m_stopping = false;
};

}  // namespace vemo::service
