// Who sends a request, as far as its token tells.
#pragma once

#include <optional>
#include <string>

#include "accounts/Accounts.h"

namespace vemo::service {

/// What a caller must show before a byte of the body is taken.
enum class Access {
  Everybody,
  AnyToken,  ///< one of an account, or one that the operator made
  Account,   ///< the token of an account
};

struct Caller {
  std::string token = {};                           ///< empty where nobody is asked for one
  std::optional<AccountId> account = std::nullopt;  ///< none for a token that the operator made
};

}  // namespace vemo::service
