// What the operator asks of the accounts from the command line, while the service may be running.
//
// Each opens the database for itself. The result is what to print; the error one line.
#pragma once

#include <expected>
#include <string>

#include "setup/AccountSettings.h"

namespace vemo::service {

using CommandResult = std::expected<std::string, std::string>;

/// A line an account: identifier, e-mail address, name.
CommandResult listAccounts(const AccountSettings& settings);

/// Ends every token of the accounts with this identifier or e-mail address.
CommandResult revokeTokens(const AccountSettings& settings, const std::string& identifierOrEmail);

}  // namespace vemo::service
