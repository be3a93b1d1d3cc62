#include "http/Admission.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/trim.hpp>

#include "accounts/BearerTokens.h"

namespace vemo::service {

namespace {

/// Empty, which no token is, when there is none.
std::string tokenOf(std::string_view authorization) {
  constexpr std::string_view scheme = "Bearer ";
  if (!boost::algorithm::istarts_with(authorization, scheme)) return {};
  authorization.remove_prefix(scheme.size());
  return boost::algorithm::trim_copy(std::string(authorization));
}

std::unexpected<Answer> refused(unsigned status, std::string_view message) {
  return std::unexpected(errorAnswer(status, message));
}

constexpr auto noValidToken = "A valid access token is needed.";

}  // namespace

void Admission::admit(std::string_view authorization, Access access, Completion completion) {
  if (access == Access::Everybody) return completion(Caller{});
  auto token = tokenOf(authorization);
  if (m_tokens.accepts(token)) {
    if (access == Access::Account)
      return completion(refused(403, "This token belongs to no account."));
    return completion(Caller{.token = std::move(token)});
  }
  if (!m_accounts || !BearerTokens::hasForm(token)) return completion(refused(401, noValidToken));
  m_accounts->ask([token, now = m_now()](
                      Database& database) { return BearerTokens(database).accountOf(token, now); },
                  [token, completion = std::move(completion)](auto account) mutable {
                    if (!account) return completion(std::unexpected(unavailableAnswer()));
                    if (!*account) return completion(refused(401, noValidToken));
                    completion(Caller{.token = std::move(token), .account = *account});
                  });
}

}  // namespace vemo::service
