// What was asked for on the command line.
#pragma once

#include <expected>
#include <filesystem>
#include <span>
#include <string>

namespace vemo::service {

struct CommandLine {
  enum class Action { Serve, AddToken, Accounts, RevokeTokens, Stats, Help, Version };

  Action action = Action::Serve;
  std::filesystem::path configurationFile;
  std::string account = {};  ///< whose tokens to revoke

  static std::expected<CommandLine, std::string> parse(std::span<const char* const> arguments);
};

inline constexpr auto helpText =
    "Usage: vemo-service [--config FILE] [COMMAND]\n"
    "\n"
    "Serves dictation requests: speech in, text out.\n"
    "\n"
    "  add-token        make an access token, print it once and keep only its hash\n"
    "  accounts         list the accounts: identifier, e-mail address, name\n"
    "  revoke-tokens ACCOUNT\n"
    "                   end every token of the account with this identifier or e-mail address\n"
    "  stats            print a summary of what clients have reported\n"
    "\n"
    "  --config FILE    read this configuration instead of\n"
    "                   XDG_CONFIG_HOME/vemo-service/vemo-service.conf\n"
    "  --help           show this help\n"
    "  --version        show the version\n"
    "\n"
    "When it serves, its first line on the standard output is \"Listening on \" and the address.\n";

}  // namespace vemo::service
