// Secrets in the desktop's keyring, by the freedesktop Secret Service protocol.
//
// Items carry the attributes `service` and `account` and nothing that ties them to this program, so
// that an item stored by hand is found too:
//   secret-tool store --label=Vemo service brelmox.Vemo account authToken
//
// Any thread. Each call runs on a thread of its own and is given up after the time limit; it is
// Failed then. The first may have a limit of its own: a keyring that has just been started takes
// its time over its first answer. Never unlocks and never prompts: what is locked is Failed. Failed
// too when the desktop has a keyring but no default collection to put items in. Without session bus
// or keyring: Unavailable.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>

#include "ports/SecretBackend.h"

namespace vemo {

class SecretServiceBackend : public SecretBackend {
 public:
  explicit SecretServiceBackend(
      std::chrono::milliseconds timeLimit = std::chrono::milliseconds(200),
      std::optional<std::chrono::milliseconds> firstTimeLimit = {});

  std::expected<QByteArray, SecretError> find(const QString& service,
                                              const QString& account) override;
  std::expected<void, SecretError> add(const QString& service, const QString& account,
                                       const QByteArray& secret) override;
  std::expected<void, SecretError> remove(const QString& service, const QString& account) override;

 private:
  std::chrono::milliseconds takeTimeLimit() { return m_nextTimeLimit.exchange(m_timeLimit); }

  const std::chrono::milliseconds m_timeLimit;
  std::atomic<std::chrono::milliseconds> m_nextTimeLimit;
};

}  // namespace vemo
