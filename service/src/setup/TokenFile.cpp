#include "setup/TokenFile.h"

#include <fcntl.h>
#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <openssl/sha.h>
#include <unistd.h>

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <cerrno>
#include <cstring>
#include <sstream>

#include "setup/SecretFile.h"

namespace vemo::service {

namespace {

bool sameFile(const struct stat& left, const struct stat& right) {
  return left.st_ino == right.st_ino && left.st_dev == right.st_dev &&
         left.st_size == right.st_size && left.st_mode == right.st_mode &&
         left.st_mtim.tv_sec == right.st_mtim.tv_sec &&
         left.st_mtim.tv_nsec == right.st_mtim.tv_nsec &&
         left.st_ctim.tv_sec == right.st_ctim.tv_sec &&
         left.st_ctim.tv_nsec == right.st_ctim.tv_nsec;
}

template <typename Bytes>
std::string hexadecimal(const Bytes& bytes) {
  std::string text;
  boost::algorithm::hex_lower(bytes.begin(), bytes.end(), std::back_inserter(text));
  return text;
}

}  // namespace

TokenFile::TokenFile(std::filesystem::path path) : m_path(std::move(path)) {}

TokenFile::Hash TokenFile::hashOf(std::string_view token) {
  Hash hash;
  SHA256(reinterpret_cast<const unsigned char*>(token.data()), token.size(), hash.data());
  return hash;
}

std::expected<std::vector<TokenFile::Hash>, std::string> TokenFile::read(
    const std::filesystem::path& path) {
  const auto content = readSecretFile(path);
  if (!content) return std::unexpected(content.error());
  std::vector<Hash> hashes;
  std::istringstream lines(*content);
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    boost::algorithm::trim(line);
    if (line.empty() || line.starts_with('#')) continue;
    Hash hash;
    try {
      if (line.size() != 2 * hash.size()) throw boost::algorithm::not_enough_input();
      boost::algorithm::unhex(line, hash.begin());
    } catch (const boost::algorithm::hex_decode_error&) {
      return std::unexpected(path.string() + ", line " + std::to_string(number) +
                             ": not a SHA-256 hash in hexadecimal");
    }
    hashes.push_back(hash);
  }
  return hashes;
}

void TokenFile::reloadIfChanged() {
  struct stat status = {};
  if (::stat(m_path.c_str(), &status) != 0) status = {};
  if (sameFile(status, m_status)) return;
  m_status = status;
  m_hashes = read(m_path).value_or(std::vector<Hash>());
}

bool TokenFile::accepts(std::string_view token) {
  reloadIfChanged();
  const Hash presented = hashOf(token);
  int matches = 0;
  for (const auto& hash : m_hashes)
    matches += CRYPTO_memcmp(hash.data(), presented.data(), hash.size()) == 0 ? 1 : 0;
  return matches > 0;
}

bool TokenFile::exists() const {
  std::error_code error;
  return std::filesystem::exists(m_path, error);
}

std::optional<std::string> TokenFile::problem() const {
  if (!exists()) return std::nullopt;
  const auto hashes = read(m_path);
  return hashes ? std::nullopt : std::optional(hashes.error());
}

std::expected<std::string, std::string> TokenFile::add(const std::filesystem::path& path) {
  const auto failure = [&path] {
    return std::unexpected(path.string() + ": " + std::strerror(errno));
  };
  std::error_code error;
  if (std::filesystem::create_directories(path.parent_path(), error))
    std::filesystem::permissions(path.parent_path(), std::filesystem::perms::owner_all, error);
  std::string separator;
  if (std::filesystem::exists(path, error)) {
    if (const auto present = read(path); !present) return std::unexpected(present.error());
    const auto content = readSecretFile(path).value_or("");
    if (!content.empty() && !content.ends_with('\n')) separator = "\n";
  }

  std::array<unsigned char, 32> random;
  if (RAND_bytes(random.data(), static_cast<int>(random.size())) != 1)
    return std::unexpected("the system gives no random numbers");
  const auto token = hexadecimal(random);
  // One write of one line: two calls at once can't mix their lines.
  const auto line = separator + hexadecimal(hashOf(token)) + "\n";
  const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  if (file < 0) return failure();
  const auto written = ::write(file, line.data(), line.size());
  const bool safe = written == static_cast<ssize_t>(line.size()) && ::fsync(file) == 0;
  const auto result = safe ? std::expected<std::string, std::string>(token) : failure();
  ::close(file);
  return result;
}

}  // namespace vemo::service
