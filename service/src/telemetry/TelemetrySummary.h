// What clients have reported, in a few lines for the person who runs the service.
#pragma once

#include "accounts/AccountCommands.h"
#include "accounts/Accounts.h"

namespace vemo::service {

/// Opens the database for itself. Numbers only: nothing of any single person.
CommandResult telemetrySummary(const AccountSettings& settings, Moment now = currentMoment());

}  // namespace vemo::service
