// Decides by the token alone who may ask, before a byte of the body is taken.
//
// Tokens that the operator made are known from a file; those of accounts are looked up in the
// database at every request, so that a revoked one ends at once, whichever instance it is shown to.
// Network thread only; a completion runs exactly once, at once or on a database worker.
#pragma once

#include <expected>

#include "database/DatabaseWorkers.h"
#include "http/Answer.h"
#include "http/Caller.h"
#include "setup/TokenFile.h"

namespace vemo::service {

class Admission {
 public:
  using Completion = std::move_only_function<void(std::expected<Caller, Answer>)>;

  /// Without `accounts` only the operator's tokens count.
  Admission(TokenFile& tokens, DatabaseWorkers* accounts, Now now = currentMoment)
      : m_tokens(tokens), m_accounts(accounts), m_now(std::move(now)) {}

  /// `authorization` is the header's value. The error is the answer: 401, 403 or 503.
  void admit(std::string_view authorization, Access access, Completion completion);

 private:
  TokenFile& m_tokens;
  DatabaseWorkers* const m_accounts;
  const Now m_now;
};

}  // namespace vemo::service
