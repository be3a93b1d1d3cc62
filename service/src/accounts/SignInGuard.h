// What keeps sign-ins single: the ID tokens that were used.
//
// It lives in the database, so that it holds across instances. One thread at a time, with its
// Database; throws soci::soci_error.
#pragma once

#include "accounts/Accounts.h"

namespace vemo::service {

class SignInGuard {
 public:
  explicit SignInGuard(Database& database) : m_database(database) {}

  /// False when this ID token has been used before.
  bool useOnce(const std::string& idToken, Moment expires);

  /// Removes what has run out: attempts, ID tokens, counted requests, what the local provider
  /// keeps.
  void forgetOutdated(Moment now);

 private:
  Database& m_database;
};

}  // namespace vemo::service
