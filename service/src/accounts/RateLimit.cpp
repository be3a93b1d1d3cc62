#include "accounts/RateLimit.h"

#include "accounts/Secrets.h"

namespace vemo::service {

using soci::into;
using soci::use;

bool RateLimit::allow(const std::string& source, long long limit, Moment now) {
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

}  // namespace vemo::service
