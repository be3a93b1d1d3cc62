#include "identity/IdTokenChecks.h"

#include <boost/asio/post.hpp>

namespace vemo::service {

IdTokenChecks::IdTokenChecks(std::vector<TrustedProvider> providers)
    : m_providers(std::move(providers)) {}

IdTokenChecks::~IdTokenChecks() {
  stop();
}

void IdTokenChecks::stop() {
  m_pool.stop();
  m_pool.join();
}

void IdTokenChecks::check(std::string idToken, std::optional<std::string> nonce, Moment now,
                          Completion completion) {
  if (m_waiting.fetch_add(1) >= mostWaiting) {
    --m_waiting;
    return completion(std::unexpected(Failure{Failure::Kind::Busy}));
  }
  boost::asio::post(m_pool, [this, idToken = std::move(idToken), nonce = std::move(nonce), now,
                             completion = std::move(completion)]() mutable {
    auto checked = result(idToken, nonce, now);
    --m_waiting;
    completion(std::move(checked));
  });
}

std::expected<IdToken, IdTokenChecks::Failure> IdTokenChecks::result(
    const std::string& idToken, const std::optional<std::string>& nonce, Moment now) const {
  Failure failure{Failure::Kind::Refused, "no identity provider is trusted"};
  for (const auto& provider : m_providers) {
    bool reachable = true;
    const auto keys = [&](const std::string& identifier) {
      auto found = provider.keys(identifier);
      reachable = found.has_value();
      return std::move(found).value_or(std::vector<JsonWebKey>());
    };
    auto checked = checkIdToken(idToken, keys, provider.rules, nonce, now);
    if (checked) return *std::move(checked);
    failure = reachable ? Failure{Failure::Kind::Refused, nameOf(checked.error())}
                        : Failure{Failure::Kind::KeysUnavailable};
  }
  return std::unexpected(failure);
}

}  // namespace vemo::service
