// The key that the local identity provider signs with, in a file of its owner's alone.
#pragma once

#include <expected>
#include <filesystem>
#include <string>

#include "identity/Jose.h"

namespace vemo::service {

/// Reads the key, or makes one when there is no file yet. Of two programs that make one at once,
/// both go on with the first's. The error is one line for the operator.
std::expected<JsonWebKey, std::string> providerKey(const std::filesystem::path& path);

}  // namespace vemo::service
