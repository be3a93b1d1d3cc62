// The bearer tokens of accounts. Only hashes are kept, so a token can't be read back.
//
// A token ends when it is revoked, when its account goes, when it hasn't been used for
// `unusedDays`, or when `tokensAnAccount` newer ones exist. One thread at a time, with its
// Database; throws soci::soci_error.
#pragma once

#include "accounts/Accounts.h"

namespace vemo::service {

class BearerTokens {
 public:
  static constexpr int unusedDays = 180;
  static constexpr int tokensAnAccount = 50;

  /// Whether this could be one at all.
  static bool hasForm(std::string_view token);

  explicit BearerTokens(Database& database) : m_database(database) {}

  /// A new token of 256 random bits. None when the account is gone.
  std::optional<std::string> issue(AccountId account, Moment now);

  /// Whose token this is; notes the day of its use.
  std::optional<AccountId> accountOf(const std::string& token, Moment now);

  /// How many tokens there were.
  long long revokeAll(AccountId account);

 private:
  Database& m_database;
};

}  // namespace vemo::service
