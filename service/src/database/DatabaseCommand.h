// Runs one piece of work of the command line on the accounts' database.
#pragma once

#include "database/Database.h"
#include "database/DatabasePreparation.h"
#include "setup/AccountSettings.h"

namespace vemo::service {

/// `work` makes a std::expected<std::string, std::string> of a Database&.
template <typename Work>
std::expected<std::string, std::string> databaseCommand(const AccountSettings& settings,
                                                        Work work) {
  if (!settings.enabled)
    return std::unexpected("accounts are off; enabled = yes in [accounts] turns them on");
  if (auto prepared = prepareDatabase(settings.database); !prepared)
    return std::unexpected(std::move(prepared).error());
  try {
    Database database(settings.database);
    return work(database);
  } catch (const std::exception&) {
    // The text of the exception may quote what is stored.
    return std::unexpected("a question to the database failed");
  }
}

}  // namespace vemo::service
