// How accounts are set up. A plain value, checked by the configuration.
#pragma once

#include <string>
#include <vector>

#include "database/DatabaseAddress.h"

namespace vemo::service {

struct AccountSettings {
  bool enabled = false;
  DatabaseAddress database = {};
  /// Whose ID tokens are taken; without one, sign-ins from elsewhere than here are refused.
  std::vector<std::string> clientIdentifiers = {};
  std::vector<std::string> issuers = {"https://accounts.google.com", "accounts.google.com"};
  std::string jwksAddress = "https://www.googleapis.com/oauth2/v3/certs";
  int signInsAMinute = 10;   ///< of one network address
  bool betaUpdates = false;  ///< whether accounts may take beta updates
};

/// What clients report needs the accounts' database.
struct TelemetrySettings {
  bool enabled = true;
  int keptDays = 90;
};

}  // namespace vemo::service
