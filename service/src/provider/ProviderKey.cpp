#include "provider/ProviderKey.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/json.hpp>
#include <cerrno>
#include <cstring>

#include "accounts/Secrets.h"
#include "setup/SecretFile.h"

namespace vemo::service {

namespace {

namespace fs = std::filesystem;

std::unexpected<std::string> failure(const fs::path& path, std::string_view reason) {
  return std::unexpected(path.string() + ": " + std::string(reason));
}

/// A public key alone would be read as well, but can't sign.
bool isPrivate(const std::string& text) {
  boost::system::error_code error;
  const auto parsed = boost::json::parse(text, error);
  return !error && parsed.is_object() && parsed.get_object().contains("d");
}

bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return ::fsync(file) == 0;
}

/// The file appears under its name only when all of it is written.
std::expected<void, std::string> makeKey(const fs::path& path) {
  std::error_code ignored;
  if (fs::create_directories(path.parent_path(), ignored))
    fs::permissions(path.parent_path(), fs::perms::owner_all, ignored);
  const auto key = JsonWebKey::makePair(randomSecret().substr(0, 16));
  auto pattern = path.string() + ".XXXXXX";
  const int file = ::mkostemp(pattern.data(), O_CLOEXEC);  // mode 0600
  if (file < 0) return failure(path, std::strerror(errno));
  const bool written = writeAll(file, key.privateJson());
  int problem = written ? 0 : errno;
  ::close(file);
  if (written && ::link(pattern.c_str(), path.c_str()) != 0 && errno != EEXIST) problem = errno;
  ::unlink(pattern.c_str());
  if (problem != 0) return failure(path, std::strerror(problem));
  return {};
}

}  // namespace

std::expected<JsonWebKey, std::string> providerKey(const fs::path& path) {
  std::error_code ignored;
  if (!fs::exists(fs::symlink_status(path, ignored)))
    if (const auto made = makeKey(path); !made) return std::unexpected(made.error());
  const auto text = readSecretFile(path);
  if (!text) return std::unexpected(text.error());
  auto key = JsonWebKey::read(*text);
  if (!key || key->identifier().empty() || !isPrivate(*text))
    return failure(path, "is not a key that this program has made");
  return *std::move(key);
}

}  // namespace vemo::service
