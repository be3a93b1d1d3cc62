#include "setup/CommandLine.h"

#include "setup/Configuration.h"

namespace vemo::service {

std::expected<CommandLine, std::string> CommandLine::parse(std::span<const char* const> arguments) {
  CommandLine result{.configurationFile = Configuration::defaultFolder() / "vemo-service.conf"};
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string_view argument = arguments[index];
    if (argument == "--help" || argument == "-h") {
      result.action = Action::Help;
    } else if (argument == "--version") {
      result.action = Action::Version;
    } else if (argument == "add-token") {
      result.action = Action::AddToken;
    } else if (argument == "accounts") {
      result.action = Action::Accounts;
    } else if (argument == "stats") {
      result.action = Action::Stats;
    } else if (argument == "revoke-tokens" && index + 1 < arguments.size()) {
      result.action = Action::RevokeTokens;
      result.account = arguments[++index];
    } else if (argument == "revoke-tokens") {
      return std::unexpected("revoke-tokens needs an account's identifier or e-mail address");
    } else if (argument.starts_with("--config=")) {
      result.configurationFile = argument.substr(argument.find('=') + 1);
    } else if (argument == "--config" && index + 1 < arguments.size()) {
      result.configurationFile = arguments[++index];
    } else if (argument == "--config") {
      return std::unexpected("--config needs a file");
    } else {
      return std::unexpected("unknown argument " + std::string(argument));
    }
  }
  return result;
}

}  // namespace vemo::service
