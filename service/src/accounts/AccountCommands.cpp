#include "accounts/AccountCommands.h"

#include <algorithm>

#include "accounts/BearerTokens.h"
#include "database/DatabaseCommand.h"

namespace vemo::service {

namespace {

/// A name is its owner's choice, and a terminal obeys control characters.
std::string printable(const std::optional<std::string>& text) {
  auto result = text.value_or("-");
  std::ranges::replace_if(
      result, [](unsigned char letter) { return letter < 0x20 || letter == 0x7F; }, '?');
  // Beyond those, UTF-8 has 32 more: C2 80 to C2 9F.
  for (std::size_t place = 0; (place = result.find('\xC2', place)) != std::string::npos; ++place)
    if (place + 1 < result.size() && static_cast<unsigned char>(result[place + 1]) < 0xA0)
      result.replace(place, 2, "?");
  return result;
}

}  // namespace

CommandResult listAccounts(const AccountSettings& settings) {
  return databaseCommand(settings, [](Database& database) -> CommandResult {
    std::string lines;
    for (const auto& account : Accounts(database).all())
      lines += std::to_string(account.id) + "\t" + printable(account.email) + "\t" +
               printable(account.name) + "\n";
    return lines;
  });
}

CommandResult revokeTokens(const AccountSettings& settings, const std::string& identifierOrEmail) {
  return databaseCommand(settings, [&](Database& database) -> CommandResult {
    const auto accounts = Accounts(database).named(identifierOrEmail);
    if (accounts.empty())
      return std::unexpected("no account has this identifier or e-mail address");
    std::string lines;
    for (const auto& account : accounts) {
      const auto count = BearerTokens(database).revokeAll(account.id);
      lines += std::to_string(account.id) + ": " + std::to_string(count) +
               (count == 1 ? " token revoked\n" : " tokens revoked\n");
    }
    return lines;
  });
}

}  // namespace vemo::service
