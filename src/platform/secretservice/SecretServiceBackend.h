// Secrets in the desktop's keyring, by the freedesktop Secret Service protocol.
//
// Items carry the attributes `service` and `account` and nothing that ties them to this program, so
// that an item stored by hand is found too:
//   secret-tool store --label=Vemo service brelmox.Vemo account authToken
//
// Any thread. Each call runs on a thread of its own and is given up after the time limit, or when
// it is told to give up; it is Failed then. A keyring that was silent for so long is left alone for
// a second, in which calls are Failed at once: who asks for several things in a row waits once.
// Never unlocks and never prompts: what is locked is Failed. Failed too when the desktop has a
// keyring but no default collection to put items in. Without session bus or keyring: Unavailable.
#pragma once

#include <atomic>
#include <chrono>
#include <stop_token>

#include "ports/SecretBackend.h"

namespace vemo {

class SecretServiceBackend : public SecretBackend {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// The limit of who holds a user up is that of the port.
  explicit SecretServiceBackend(Milliseconds timeLimit = Milliseconds(200),
                                std::stop_token giveUp = {});

  std::expected<QByteArray, SecretError> find(const QString& service,
                                              const QString& account) override;
  std::expected<void, SecretError> add(const QString& service, const QString& account,
                                       const QByteArray& secret) override;
  std::expected<void, SecretError> remove(const QString& service, const QString& account) override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  template <typename T, typename Use>
  std::expected<T, SecretError> call(Use use);

  const Milliseconds m_timeLimit;
  const std::stop_token m_giveUp;
  std::atomic<Time> m_silentUntil{Time::min()};
};

}  // namespace vemo
