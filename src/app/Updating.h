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

/// The first thing of a start, as whatever comes after may be what doesn't work in a new version:
/// one that has twice neither run well nor ended regularly gives way, and the one before takes this
/// process over with its arguments.
std::optional<SelfContainedCopy> beginStartOfOwnCopy(char** arguments);

/// What the desktop starts, at login or for an address: stays right when a version is replaced.
QString programToStart(const Foundation& foundation);

/// What is ready is installed when the program ends; `quit` ends it before.
MakeUpdater makeUpdaterOver(HttpSession& session, Foundation& foundation,
                            const DeploymentConfiguration& configuration,
                            std::function<void()> quit);

/// Lets go of the versions before, once this one has run for a while.
Task<> keepOwnCopyWhenStartedWell(Foundation& foundation, std::stop_token stop);

/// At the very end of the program, when nothing holds its name any more: becomes the program that
/// an update has put in place, or returns where there is none.
void becomeUpdatedProgram();

}  // namespace vemo
