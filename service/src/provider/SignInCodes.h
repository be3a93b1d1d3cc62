// What the local identity provider keeps between its page and its ID token, in the database, so
// that a restart or another instance can go on with it.
//
// One thread at a time, with its Database; throws soci::soci_error. Of tickets and codes only
// hashes are stored, and each is good for one use.
#pragma once

#include "accounts/Accounts.h"

namespace vemo::service {

class SignInCodes {
 public:
  /// How long the page may stand before its button is pressed.
  static constexpr std::chrono::minutes ticketLifetime{10};
  static constexpr std::chrono::seconds codeLifetime{60};

  struct Request {
    std::string challenge;
    std::string state;
    std::string nonce;  ///< empty when there was none

    bool operator==(const Request&) const = default;
  };

  explicit SignInCodes(Database& database) : m_database(database) {}

  void keepRequest(const std::string& ticket, const Request& request, Moment now);
  std::optional<Request> takeRequest(const std::string& ticket, Moment now);

  void keepCode(const std::string& code, const Request& request, Moment now);
  /// Its state is empty.
  std::optional<Request> takeCode(const std::string& code, Moment now);

 private:
  Database& m_database;
};

}  // namespace vemo::service
