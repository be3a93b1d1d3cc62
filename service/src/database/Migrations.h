// The database's schema, as numbered steps that are taken once and in order.
//
// A step that has been released never changes; a new need is a new step. `migrate` may run in
// several instances at once: one does the work, the others wait. Throws soci::soci_error.
#pragma once

#include <expected>
#include <string>

#include "database/Database.h"

namespace vemo::service {

/// The number of the last step.
int latestSchema();

/// The last step that this database has taken; 0 for an empty one.
int schemaOf(Database& database);

/// Takes every step up to `target`, all or none. The error, one line for the operator, is a
/// database that a newer program has written.
std::expected<void, std::string> migrate(Database& database, int target = latestSchema());

}  // namespace vemo::service
