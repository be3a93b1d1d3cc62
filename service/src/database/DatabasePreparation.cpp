#include "database/DatabasePreparation.h"

#include "database/Migrations.h"

namespace vemo::service {

std::expected<void, std::string> prepareDatabase(const DatabaseAddress& address) {
  try {
    Database database(address);
    return migrate(database);
  } catch (const std::exception& failure) {
    // What PostgreSQL's library says may quote the address, and that a password.
    if (address.kind == DatabaseAddress::Kind::PostgreSql)
      return std::unexpected("the database cannot be opened; try its address with psql");
    return std::unexpected("the database cannot be opened: " + std::string(failure.what()));
  }
}

}  // namespace vemo::service
