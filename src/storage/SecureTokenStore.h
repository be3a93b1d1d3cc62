// The program's bearer secrets, by account name, kept in the desktop's secret stores.
//
// Backends are tried in order: the first one is where new items go; an item found only in a later
// one moves to the first. The first answer for an account, its absence included, is kept in memory,
// so that further reads cost a map look-up.
//
// Any thread, synchronous. No operation throws; a failure is an absent or false result. Values are
// never logged. The lock guards the memory alone and is never held across a call to a backend.
#pragma once

#include <QString>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "ports/SecretBackend.h"

namespace vemo {

class DebugLog;

inline constexpr auto authTokenAccount = u"authToken";
inline constexpr auto slackApiTokenAccount = u"slackApiToken";

class SecureTokenStore {
 public:
  /// At least one backend; they outlive the store.
  SecureTokenStore(std::vector<SecretBackend*> backends, DebugLog& debugLog);

  /// The secret, or nothing. An empty item counts as none.
  std::optional<QString> read(const QString& account);

  /// Replaces the secret. False when no backend took it; the old one is gone then.
  bool write(const QString& value, const QString& account);

  /// True when no backend holds the item any more.
  bool remove(const QString& account);

 private:
  void remember(const QString& account, std::optional<QString> value);
  void promote(const QString& account, const QByteArray& secret, SecretBackend& from);

  const std::vector<SecretBackend*> m_backends;
  DebugLog& m_debugLog;
  std::mutex m_mutex;
  std::map<QString, std::optional<QString>> m_cache;
};

}  // namespace vemo
