// The local identity provider put together: its key, its listener, its pages.
//
// Made and used on the network thread; owned by the program, and alive until the executor has run
// dry and the database's workers have ended.
#pragma once

#include "identity/IdTokenChecks.h"
#include "provider/ProviderServer.h"

namespace vemo::service {

class LocalSignIn {
 public:
  /// Reads or makes the key, and listens; the error is one line for the operator.
  static std::expected<std::unique_ptr<LocalSignIn>, std::string> open(
      const ProviderSettings& settings, boost::asio::io_context& io, AccessLog& log);

  /// What the accounts trust its ID tokens by.
  TrustedProvider trusted() const;
  std::string address() const { return m_server.address(); }

  void serve(DatabaseWorkers& workers);
  void stop() { m_server.stop(); }

 private:
  LocalSignIn(ProviderSettings settings, JsonWebKey key, boost::asio::io_context& io,
              AccessLog& log);

  ProviderSettings m_settings;
  const JsonWebKey m_key;
  ProviderServer m_server;
  std::optional<LocalProvider> m_provider;
};

}  // namespace vemo::service
