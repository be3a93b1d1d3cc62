#include "web/WebServer.h"

#include <boost/url.hpp>

namespace vemo::service {

namespace ssl = boost::asio::ssl;

std::expected<std::unique_ptr<WebServer>, std::string> WebServer::at(
    std::string_view address, const std::filesystem::path& certificateAuthorities) {
  const auto url = boost::urls::parse_uri({address.data(), address.size()});
  if (!url || url->encoded_host().empty() || url->has_query() || url->has_fragment() ||
      url->has_userinfo())
    return std::unexpected("is not a plain web address");
  std::unique_ptr<WebServer> server(new WebServer);
  server->m_encrypted = url->scheme() == "https";
  server->m_host = url->host_address();
  server->m_port = url->has_port() ? std::string(url->port()) : server->m_encrypted ? "443" : "80";
  server->m_hostHeader = std::string(url->encoded_host_and_port());
  server->m_path = std::string(url->encoded_path());
  if (!server->m_encrypted) return server;

  boost::system::error_code error;
  if (certificateAuthorities.empty())
    server->m_tls.set_default_verify_paths(error);
  else
    server->m_tls.load_verify_file(certificateAuthorities.string(), error);
  if (error)
    return std::unexpected("cannot be verified: the certificate authorities cannot be read");
  server->m_tls.set_verify_mode(ssl::verify_peer);
  SSL_CTX_set_min_proto_version(server->m_tls.native_handle(), TLS1_2_VERSION);
  return server;
}

}  // namespace vemo::service
