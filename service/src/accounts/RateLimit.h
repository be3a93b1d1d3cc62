// How often somebody may do something in a minute.
//
// The counts live in the database, so that they hold across instances. One thread at a time, with
// its Database; throws soci::soci_error.
#pragma once

#include "accounts/Accounts.h"

namespace vemo::service {

class RateLimit {
 public:
  explicit RateLimit(Database& database) : m_database(database) {}

  /// Counts an attempt; false above `limit` in a minute. Of the source only a hash is kept, and
  /// for minutes.
  bool allow(const std::string& source, long long limit, Moment now);

 private:
  Database& m_database;
};

}  // namespace vemo::service
