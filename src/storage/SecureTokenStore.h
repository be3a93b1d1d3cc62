// The program's bearer secrets, by account name, kept in the desktop's secret stores.
//
// Backends are tried in order: the first one is where new items go; an item found only in a later
// one moves to the first. The first answer for an account, its absence included, is kept in memory,
// so that further reads cost a map look-up. An account that is expected reads as absent, without
// asking, until a refresh has its first answer: so a program starts without waiting for a keyring.
//
// Any thread, synchronous. No operation throws; a failure is an absent or false result. Values are
// never logged. The lock guards the memory alone and is never held across a call to a backend.
#pragma once

#include <QString>
#include <map>
#include <mutex>
#include <optional>
#include <set>
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

  /// Announces a refresh of the account.
  void expect(const QString& account);

  /// Whether the first answer to an expected account is still to come.
  bool isExpected(const QString& account) const;

  /// How the memory of an account stands to the first backend.
  enum class Standing {
    Settled,
    NoStore,  ///< there was no such store on this desktop, and when one comes, as with Open
    Open,     ///< locked or silent: it may hold a secret that nobody knows, or one that was
              ///< removed, or has still to take one that went elsewhere
  };
  Standing standing(const QString& account) const;

  /// Removes what a removal has left behind, and asks these backends, in their order, whatever is
  /// in memory. A first one that answers takes what a later one has. Takes as long as they take, so
  /// it is for a thread that may wait. Writes and removals meanwhile count more than the answer.
  /// True when read() answers for the first time, or differently.
  bool refresh(const QString& account, const std::vector<SecretBackend*>& backends);

 private:
  using Backends = std::vector<SecretBackend*>;

  struct Memory {
    std::optional<QString> value;
    bool isExpected = false;
    Standing standing = Standing::Settled;
    bool isRemovalOpen = false;
    unsigned changeCount = 0;  ///< writes and removals
  };

  struct Found {
    std::optional<QString> value;
    SecretBackend* place = nullptr;         ///< that has it
    Standing standing = Standing::Settled;  ///< of the first
  };

  Found lookUp(const QString& account, const Backends& backends);
  Standing promote(const QString& account, const QString& value, const Backends& backends);
  bool isFirstRefusal(const QString& account);
  bool finishRemoval(const QString& account, SecretBackend& backend, unsigned changeCount);
  void bringInLine(const QString& account, SecretBackend& backend);
  void settleRemoval(const QString& account, const std::expected<void, SecretError>& outcome);
  void setStanding(const QString& account, Standing standing);
  Memory memoryOf(const QString& account) const;
  void remember(const QString& account, std::optional<QString> value);

  const Backends m_backends;
  DebugLog& m_debugLog;
  mutable std::mutex m_mutex;
  std::map<QString, Memory> m_memory;
  std::set<QString> m_refusals;  ///< accounts whose refused promotion the log tells of
};

}  // namespace vemo
