// The running service: queue, API and server put together on one network thread.
//
// `run` returns when a SIGTERM or SIGINT has been followed by a graceful end, a second signal has
// cut that short, or the engine turned out not to load. Made and run on one thread.
#pragma once

#include <iosfwd>

#include "setup/Configuration.h"
#include "speech/Engine.h"

namespace vemo::service {

/// Serves until it is told to stop; returns the exit code. `output` gets the line with the address,
/// `errors` everything else.
int serve(const Configuration& configuration, const EngineKind& engine, std::ostream& output,
          std::ostream& errors);

}  // namespace vemo::service
