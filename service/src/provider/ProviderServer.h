// The local identity provider's own listener on loopback.
//
// Network thread only; owned by the program, and alive until the executor has run dry. One request
// a connection. Every connection has a time limit as a whole, and there are few at a time. `stop`
// ends all of them. Connections of other logins of this machine are closed without a word.
#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <expected>
#include <memory>
#include <string>
#include <unordered_set>

#include "http/AccessLog.h"
#include "provider/LocalProvider.h"

namespace vemo::service {

class ProviderServer {
 public:
  static constexpr std::size_t mostConnections = 64;
  static constexpr std::size_t largestHead = std::size_t{16} * 1024;

  explicit ProviderServer(boost::asio::io_context& io, AccessLog& log);

  /// Binds and listens; the error is one line for the operator. Nobody is answered before `serve`.
  std::expected<void, std::string> listen(const std::string& address, std::uint16_t port);
  /// The one that was chosen.
  std::uint16_t port() const { return m_acceptor.local_endpoint().port(); }
  /// "http://address:port"
  std::string address() const;

  void serve(LocalProvider& provider);
  void stop();

 private:
  using Stream = std::shared_ptr<boost::beast::tcp_stream>;

  boost::asio::awaitable<void> accept(LocalProvider& provider);
  boost::asio::awaitable<void> exchange(LocalProvider& provider, Stream stream);

  boost::asio::io_context& m_io;
  AccessLog& m_log;
  boost::asio::ip::tcp::acceptor m_acceptor;
  std::unordered_set<Stream> m_streams;
};

}  // namespace vemo::service
