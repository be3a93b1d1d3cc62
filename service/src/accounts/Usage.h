// What accounts have used: sums, one row an account, that dictations add to.
//
// One thread at a time, with its Database; throws soci::soci_error.
#pragma once

#include "accounts/Accounts.h"

namespace vemo::service {

struct UsageSums {
  std::int64_t words = 0;
  std::int64_t cycleWords = 0;  ///< since the first of the month, UTC
  std::chrono::milliseconds speech{0};
  std::int64_t aiTokens = 0;
  std::int64_t utterances = 0;
  std::int64_t requests = 0;
  std::optional<Moment> lastActive = std::nullopt;

  bool operator==(const UsageSums&) const = default;
};

/// What one answered request adds.
struct UsageStep {
  std::int64_t words = 0;
  std::chrono::milliseconds speech{0};
  std::int64_t aiTokens = 0;
  std::int64_t utterances = 0;
};

class Usage {
 public:
  /// For so long, a request with the same key isn't counted again.
  static constexpr std::chrono::seconds remembered{600};

  explicit Usage(Database& database) : m_database(database) {}

  /// `key` is the same for copies of one request. False when it has been counted, or the account is
  /// gone.
  bool add(AccountId account, const UsageStep& step, const std::string& key, Moment now);
  UsageSums of(AccountId account, Moment now);

 private:
  Database& m_database;
};

}  // namespace vemo::service
