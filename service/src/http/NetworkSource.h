// Where a request comes from, for limits on how often.
#pragma once

#include "http/Router.h"

namespace vemo::service {

/// The address, for IPv6 its network of 64 bits, since whoever has one address has all of those.
/// Behind a proxy it is the one that the proxy has written; what stands before that in the header
/// is the client's own word.
std::string networkOf(const Request& request, bool behindProxy);

}  // namespace vemo::service
