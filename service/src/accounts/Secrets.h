// Random secrets, their hashes and their comparison. Pure functions, any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vemo::service {

/// 256 random bits in base64url, 43 characters. Throws std::runtime_error when the system has none.
std::string randomSecret();

/// From 1 up, for rows that others shall not guess.
std::int64_t randomIdentifier();

/// SHA-256 in base64url. Enough for secrets with as many bits of their own.
std::string secretHash(std::string_view secret);

/// Takes the same time wherever the two differ.
bool equalSecrets(std::string_view left, std::string_view right);

}  // namespace vemo::service
