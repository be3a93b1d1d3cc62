// The accounts in the database. One thread at a time, with its Database; throws soci::soci_error.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "database/Database.h"

namespace vemo::service {

using AccountId = std::int64_t;
using Moment = std::chrono::sys_seconds;
using Now = std::function<Moment()>;

inline Moment currentMoment() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

/// Who somebody is, as an identity provider says. Issuer and subject together name a person for
/// good; an e-mail address may move to somebody else.
struct Identity {
  std::string issuer;
  std::string subject;
  std::optional<std::string> email = std::nullopt;
  std::optional<std::string> name = std::nullopt;
  std::optional<std::string> avatar = std::nullopt;  ///< an https address
};

struct Account {
  AccountId id = 0;
  std::optional<std::string> email = std::nullopt;
  std::optional<std::string> name = std::nullopt;
  std::optional<std::string> avatar = std::nullopt;

  bool operator==(const Account&) const = default;
};

class Accounts {
 public:
  explicit Accounts(Database& database) : m_database(database) {}

  /// The account of an identity, made at its first sign-in. A later sign-in brings address and
  /// picture up to date, but never the name, which the person may have changed here.
  Account signIn(const Identity& identity, Moment now);

  std::optional<Account> find(AccountId id);
  std::optional<Account> rename(AccountId id, const std::string& name);
  /// Removes every row that belongs to the account. False when there is no such account.
  bool remove(AccountId id);

  /// Every account with this identifier or e-mail address.
  std::vector<Account> named(const std::string& identifierOrEmail);
  std::vector<Account> all();

 private:
  std::vector<Account> select(const std::string& condition, const std::string& value);

  Database& m_database;
};

}  // namespace vemo::service
