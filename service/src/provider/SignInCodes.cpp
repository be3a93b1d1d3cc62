#include "provider/SignInCodes.h"

#include "accounts/Secrets.h"

namespace vemo::service {

using soci::into;
using soci::use;

namespace {

long long secondsOf(Moment moment) {
  return moment.time_since_epoch().count();
}

}  // namespace

void SignInCodes::keepRequest(const std::string& ticket, const Request& request, Moment now) {
  const auto hash = secretHash(ticket);
  const auto expires = secondsOf(now + ticketLifetime);
  m_database.session() << "INSERT INTO provider_requests (ticket, challenge, state, nonce, "
                          "expires_at) VALUES (:ticket, :challenge, :state, :nonce, :expires)",
      use(hash), use(request.challenge), use(request.state), use(request.nonce), use(expires);
}

std::optional<SignInCodes::Request> SignInCodes::takeRequest(const std::string& ticket,
                                                             Moment now) {
  const auto hash = secretHash(ticket);
  Request request;
  long long expires = 0;
  auto& session = m_database.session();
  session << "DELETE FROM provider_requests WHERE ticket = :ticket RETURNING challenge, state, "
             "nonce, expires_at",
      use(hash), into(request.challenge), into(request.state), into(request.nonce), into(expires);
  if (!session.got_data() || expires <= secondsOf(now)) return std::nullopt;
  return request;
}

void SignInCodes::keepCode(const std::string& code, const Request& request, Moment now) {
  const auto hash = secretHash(code);
  const auto expires = secondsOf(now + codeLifetime);
  m_database.session() << "INSERT INTO provider_codes (code, challenge, nonce, expires_at) VALUES "
                          "(:code, :challenge, :nonce, :expires)",
      use(hash), use(request.challenge), use(request.nonce), use(expires);
}

std::optional<SignInCodes::Request> SignInCodes::takeCode(const std::string& code, Moment now) {
  const auto hash = secretHash(code);
  Request request;
  long long expires = 0;
  auto& session = m_database.session();
  session << "DELETE FROM provider_codes WHERE code = :code RETURNING challenge, nonce, expires_at",
      use(hash), into(request.challenge), into(request.nonce), into(expires);
  if (!session.got_data() || expires <= secondsOf(now)) return std::nullopt;
  return request;
}

}  // namespace vemo::service
