// Opens the database at the start and brings its schema up to date.
#pragma once

#include <expected>
#include <string>

#include "database/DatabaseAddress.h"

namespace vemo::service {

/// Makes what is absent. The error is one line for the operator, without secrets.
std::expected<void, std::string> prepareDatabase(const DatabaseAddress& address);

}  // namespace vemo::service
