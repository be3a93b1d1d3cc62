// The engine that a configuration names. The one place that knows which engines there are.
#pragma once

#include "setup/Configuration.h"
#include "speech/Engine.h"

namespace vemo::service {

EngineKind engineOf(const Configuration& configuration);

}  // namespace vemo::service
