// The dictionaries of accounts. One thread at a time, with its Database; throws soci::soci_error.
#pragma once

#include "accounts/Accounts.h"

namespace vemo::service {

struct DictionaryEntry {
  std::int64_t id = 0;
  std::string phrase;
  std::string replacement;

  bool operator==(const DictionaryEntry&) const = default;
};

class Dictionary {
 public:
  static constexpr long long entriesAnAccount = 5000;

  Dictionary(Database& database, AccountId account) : m_database(database), m_account(account) {}

  /// In the order in which they were added.
  std::vector<DictionaryEntry> entries();
  /// None when the dictionary is full, or its account gone.
  std::optional<DictionaryEntry> add(const std::string& phrase, const std::string& replacement);
  bool remove(std::int64_t id);

 private:
  Database& m_database;
  const AccountId m_account;
};

}  // namespace vemo::service
