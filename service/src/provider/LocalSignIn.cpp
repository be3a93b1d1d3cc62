#include "provider/LocalSignIn.h"

#include "provider/ProviderKey.h"

namespace vemo::service {

LocalSignIn::LocalSignIn(ProviderSettings settings, JsonWebKey key, boost::asio::io_context& io,
                         AccessLog& log)
    : m_settings(std::move(settings)), m_key(std::move(key)), m_server(io, log) {}

std::expected<std::unique_ptr<LocalSignIn>, std::string> LocalSignIn::open(
    const ProviderSettings& settings, boost::asio::io_context& io, AccessLog& log) {
  auto key = providerKey(settings.keyFile);
  if (!key) return std::unexpected(std::move(key).error());
  std::unique_ptr<LocalSignIn> signIn(
      new LocalSignIn(settings.completed(), *std::move(key), io, log));
  if (auto listening = signIn->m_server.listen(settings.address, settings.port); !listening)
    return std::unexpected(std::move(listening).error());
  signIn->m_settings.port = signIn->m_server.port();
  return signIn;
}

TrustedProvider LocalSignIn::trusted() const {
  return {.rules = {.issuers = {localIssuer}, .audiences = {m_settings.clientIdentifier}},
          .keys = [key = m_key](const std::string& identifier) {
            const bool isKnown = identifier.empty() || identifier == key.identifier();
            return std::optional(isKnown ? std::vector{key} : std::vector<JsonWebKey>());
          }};
}

void LocalSignIn::serve(DatabaseWorkers& workers) {
  m_provider.emplace(m_settings, m_key, workers, currentMoment);
  m_server.serve(*m_provider);
}

}  // namespace vemo::service
