#include "accounts/SignInGuard.h"

#include "accounts/Secrets.h"
#include "accounts/Usage.h"

namespace vemo::service {

using soci::use;

bool SignInGuard::useOnce(const std::string& idToken, Moment expires) {
  const auto hash = secretHash(idToken);
  const long long seconds = expires.time_since_epoch().count();
  return changedRows(
             (m_database.session().prepare
                  << "INSERT INTO used_id_tokens (hash, expires_at) VALUES (:hash, :expires) "
                     "ON CONFLICT DO NOTHING",
              use(hash), use(seconds))) > 0;
}

void SignInGuard::forgetOutdated(Moment now) {
  const long long seconds = now.time_since_epoch().count();
  const long long minute = seconds / 60;
  const long long counted = seconds - Usage::remembered.count();
  auto& session = m_database.session();
  session << "DELETE FROM sign_in_attempts WHERE minute < :minute", use(minute);
  session << "DELETE FROM used_id_tokens WHERE expires_at < :now", use(seconds);
  session << "DELETE FROM counted_requests WHERE counted_at < :counted", use(counted);
  session << "DELETE FROM provider_requests WHERE expires_at < :now", use(seconds);
  session << "DELETE FROM provider_codes WHERE expires_at < :now", use(seconds);
}

}  // namespace vemo::service
