// The keys that an identity provider publishes, fetched when they are needed and kept for a while.
//
// `find` is for any thread but the network's: it may wait for the fetch, up to `fetchTime`, and one
// thread fetches while the others wait for it. A key that nobody knows is looked for at the
// provider again, which is how keys rotate, but not more often than each `retryPause`. When a fetch
// fails, the keys that are there go on counting until `keptAtMost`.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

#include "identity/Jose.h"
#include "web/WebServer.h"

namespace vemo::service {

class RemoteKeys {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::chrono::seconds fetchTime{5};
  static constexpr std::chrono::seconds retryPause{30};
  static constexpr std::chrono::hours keptAtMost{24};
  static constexpr std::size_t largestKeySet = 256 * 1024;

  RemoteKeys(std::unique_ptr<WebServer> server,
             std::function<Clock::time_point()> now = Clock::now);

  /// The keys with this identifier; all when it is empty. None when the provider can't be reached
  /// and nothing is known.
  std::optional<std::vector<JsonWebKey>> find(const std::string& identifier);

 private:
  struct KeySet {
    std::vector<JsonWebKey> keys;
    std::chrono::seconds lifetime;
  };

  void fetch(Clock::time_point now);
  std::optional<KeySet> ask();
  std::vector<JsonWebKey> known(const std::string& identifier) const;

  const std::unique_ptr<WebServer> m_server;
  const std::function<Clock::time_point()> m_now;
  std::mutex m_mutex;
  std::vector<JsonWebKey> m_keys;
  std::optional<Clock::time_point> m_asked;
  Clock::time_point m_fresh;   ///< until then the keys count without a question
  Clock::time_point m_usable;  ///< until then they count when the provider is gone
};

}  // namespace vemo::service
