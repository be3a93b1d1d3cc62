#include "accounts/SignInGuard.h"

#include "accounts/Secrets.h"
#include "accounts/Usage.h"

namespace vemo::service {

using soci::into;
using soci::use;

bool SignInGuard::allow(const std::string& source, long long limit, Moment now) {
  const auto hash = secretHash(source);
  const long long minute = std::chrono::floor<std::chrono::minutes>(now).time_since_epoch().count();
  long long attempts = 0;
  m_database.session()
      << "INSERT INTO sign_in_attempts (source, minute, attempts) VALUES (:source, :minute, 1) ON "
         "CONFLICT (source, minute) DO UPDATE SET attempts = sign_in_attempts.attempts + 1 "
         "RETURNING attempts",
      use(hash), use(minute), into(attempts);
  return attempts <= limit;
}

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
