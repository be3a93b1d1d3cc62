// Reads a file that only its owner may read.
#pragma once

#include <expected>
#include <filesystem>
#include <string>

namespace vemo::service {

/// The whole content of a small regular file. Refuses one that group or others may touch, and one
/// above 1 MiB; the error is one line for the operator and holds nothing of the content.
std::expected<std::string, std::string> readSecretFile(const std::filesystem::path& path);

}  // namespace vemo::service
