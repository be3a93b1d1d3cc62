// The check of an ID token, as OpenID Connect Core 3.1.3.7 asks for.
//
// A pure function over hostile text; any thread.
#pragma once

#include <functional>

#include "accounts/Accounts.h"
#include "identity/Jose.h"

namespace vemo::service {

struct IdTokenRules {
  std::vector<std::string> issuers;
  std::vector<std::string> audiences;  ///< the client identifiers that sign-ins come from
};

/// In the order in which they are found.
enum class IdTokenProblem {
  Malformed,
  Algorithm,
  UnknownKey,
  Signature,
  Issuer,
  Audience,
  Expired,
  NotYetValid,
  Nonce,
};

/// One word or two for the log.
std::string_view nameOf(IdTokenProblem problem);

struct IdToken {
  Identity identity;
  Moment expires;
};

/// The keys that have this identifier; all of them when it is empty.
using KeyFinder = std::function<std::vector<JsonWebKey>(const std::string& identifier)>;

/// `nonce` is what the client sent to the provider, if it did. An ID token with a nonce that nobody
/// asks about belongs to another sign-in.
std::expected<IdToken, IdTokenProblem> checkIdToken(const std::string& compact,
                                                    const KeyFinder& keys,
                                                    const IdTokenRules& rules,
                                                    const std::optional<std::string>& nonce,
                                                    Moment now);

}  // namespace vemo::service
