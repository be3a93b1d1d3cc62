// Checks ID tokens of the identity providers that are trusted here, on threads of its own, since a
// provider's keys may have to be fetched.
//
// `check` is for any thread; its completion runs exactly once, on a thread of this object or in
// `check`. At most `mostWaiting` checks wait. Destroying this drops those that have not begun.
#pragma once

#include <atomic>
#include <boost/asio/thread_pool.hpp>
#include <functional>
#include <memory>

#include "identity/IdToken.h"

namespace vemo::service {

struct TrustedProvider {
  IdTokenRules rules;
  /// The keys with an identifier, all when it is empty; none when they can't be had right now. May
  /// wait. Any thread.
  std::function<std::optional<std::vector<JsonWebKey>>(const std::string& identifier)> keys;
};

class IdTokenChecks {
 public:
  static constexpr int mostWaiting = 64;
  static constexpr int threads = 2;

  struct Failure {
    enum class Kind { Refused, KeysUnavailable, Busy };
    Kind kind;
    std::string_view reason = {};  ///< of a refusal, for the log
  };
  using Completion = std::move_only_function<void(std::expected<IdToken, Failure>)>;

  /// The providers are tried in their order, so those whose keys need no fetch come first.
  explicit IdTokenChecks(std::vector<TrustedProvider> providers);
  ~IdTokenChecks();

  /// Ends the threads; what is asked from now on is dropped with this object.
  void stop();

  void check(std::string idToken, std::optional<std::string> nonce, Moment now,
             Completion completion);

 private:
  std::expected<IdToken, Failure> result(const std::string& idToken,
                                         const std::optional<std::string>& nonce, Moment now) const;

  const std::vector<TrustedProvider> m_providers;
  std::atomic<int> m_waiting = 0;
  boost::asio::thread_pool m_pool{threads};
};

}  // namespace vemo::service
