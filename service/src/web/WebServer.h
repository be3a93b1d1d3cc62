// Another server on the web, and a connection to it: plain, or over TLS that is always verified.
//
// Immutable once made; connections may be made on any thread. Cancelled by stopping the executor.
#pragma once

#include <boost/asio.hpp>
#include <boost/asio/ssl.hpp>
#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace vemo::service {

class WebServer {
 public:
  /// `address` is "http://" or "https://", a host, maybe a port and a path; the error ends a
  /// sentence about it. Without `certificateAuthorities`, a PEM file, the system's count.
  static std::expected<std::unique_ptr<WebServer>, std::string> at(
      std::string_view address, const std::filesystem::path& certificateAuthorities = {});

  const std::string& path() const { return m_path; }  ///< empty, or begins with "/"
  const std::string& hostHeader() const { return m_hostHeader; }

  /// Connects and runs `exchange(stream)` over it. Throws boost::system::system_error.
  template <typename Exchange>
  auto connected(Exchange exchange)
      -> decltype(exchange(std::declval<boost::asio::ip::tcp::socket&>())) {
    namespace net = boost::asio;
    const auto executor = co_await net::this_coro::executor;
    net::ip::tcp::resolver resolver(executor);
    const auto addresses = co_await resolver.async_resolve(m_host, m_port, net::use_awaitable);
    net::ip::tcp::socket socket(executor);
    co_await net::async_connect(socket, addresses, net::use_awaitable);
    if (!m_encrypted) co_return co_await exchange(socket);

    net::ssl::stream<net::ip::tcp::socket> stream(std::move(socket), m_tls);
    stream.set_verify_callback(net::ssl::host_name_verification(m_host));
    SSL_set_tlsext_host_name(stream.native_handle(), m_host.c_str());
    co_await stream.async_handshake(net::ssl::stream_base::client, net::use_awaitable);
    co_return co_await exchange(stream);
  }

 private:
  WebServer() = default;

  std::string m_host;
  std::string m_port;
  std::string m_path;
  std::string m_hostHeader;
  bool m_encrypted = false;
  boost::asio::ssl::context m_tls{boost::asio::ssl::context::tls_client};
};

}  // namespace vemo::service
