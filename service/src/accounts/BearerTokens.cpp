#include "accounts/BearerTokens.h"

#include <algorithm>

#include "accounts/Secrets.h"

namespace vemo::service {

namespace {

using soci::into;
using soci::use;

long long dayOf(Moment moment) {
  return std::chrono::floor<std::chrono::days>(moment).time_since_epoch().count();
}

}  // namespace

bool BearerTokens::hasForm(std::string_view token) {
  constexpr std::size_t length = 43;  // 256 bits in base64url
  return token.size() == length && std::ranges::all_of(token, [](char letter) {
           return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                  (letter >= '0' && letter <= '9') || letter == '-' || letter == '_';
         });
}

std::optional<std::string> BearerTokens::issue(AccountId account, Moment now) {
  const auto token = randomSecret();
  const auto hash = secretHash(token);
  const long long seconds = now.time_since_epoch().count();
  const long long day = dayOf(now);
  const int newest = tokensAnAccount;
  auto& session = m_database.session();
  const bool issued = m_database.inTransaction([&] {
    const auto inserted = changedRows(
        (session.prepare << "INSERT INTO tokens (hash, account, created_at, last_used_day) SELECT "
                            ":hash, id, :now, :day FROM accounts WHERE id = :account",
         use(hash), use(seconds), use(day), use(account)));
    session
        << "DELETE FROM tokens WHERE account = :account AND hash NOT IN (SELECT hash FROM tokens "
           "WHERE account = :same ORDER BY last_used_day DESC, created_at DESC LIMIT :newest)",
        use(account), use(account), use(newest);
    return inserted > 0;
  });
  return issued ? std::optional(token) : std::nullopt;
}

std::optional<AccountId> BearerTokens::accountOf(const std::string& token, Moment now) {
  const auto hash = secretHash(token);
  std::string found;
  long long account = 0;
  long long lastUsed = 0;
  auto& session = m_database.session();
  session << "SELECT hash, account, last_used_day FROM tokens WHERE hash = :hash", use(hash),
      into(found), into(account), into(lastUsed);
  if (!session.got_data() || !equalSecrets(found, hash)) return std::nullopt;
  const long long today = dayOf(now);
  if (today - lastUsed > unusedDays) return std::nullopt;
  if (today > lastUsed)
    session << "UPDATE tokens SET last_used_day = :today WHERE hash = :hash", use(today), use(hash);
  return account;
}

long long BearerTokens::revokeAll(AccountId account) {
  return changedRows((m_database.session().prepare << "DELETE FROM tokens WHERE account = :account",
                      use(account)));
}

}  // namespace vemo::service
