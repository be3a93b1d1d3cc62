// Updates of this program's own files: the updater, what starts after it, and a new version's first
// start.
//
// Main thread only.
#pragma once

#include <functional>

#include "app/Foundation.h"
#include "base/TaskScope.h"
#include "platform/updater/SelfContainedCopy.h"
#include "ports/HttpSession.h"
#include "ports/Updater.h"
#include "storage/DeploymentConfiguration.h"

namespace vemo {

/// Of an archive, a piece has to come in this time; a server that is slower isn't waited for.
inline constexpr HttpSessionLimits updateLimits{.requestTimeout = std::chrono::seconds(20),
                                                .resourceTimeout = std::chrono::seconds(128)};

/// What is ready is installed when the program ends; `quit` ends it before.
MakeUpdater makeUpdaterOver(HttpSession& session, Foundation& foundation,
                            const DeploymentConfiguration& configuration,
                            std::function<void()> quit);

/// The copy that this program runs from, where it is the user's own. A version that has twice ended
/// soon after its start gives way here: the one before takes this process over.
std::optional<SelfContainedCopy> beginStartOfOwnCopy();

/// Lets go of the version before, once this one has run for a while.
Task<> keepOwnCopyWhenStartedWell(std::optional<SelfContainedCopy> copy, Clock& clock,
                                  std::stop_token stop);

/// At the very end of the program, when nothing holds its name any more: becomes the program that
/// an update has put in place, or returns where there is none.
void becomeUpdatedProgram();

}  // namespace vemo
