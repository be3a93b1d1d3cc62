// The bearer tokens that open the service, kept as SHA-256 hashes, one hexadecimal line each.
//
// `accepts` sees changes of the file at once, so a token that is added or removed counts from the
// next request on. A file that can't be read, or that others may read, accepts nobody. One thread.
#pragma once

#include <sys/stat.h>

#include <array>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vemo::service {

class TokenFile {
 public:
  explicit TokenFile(std::filesystem::path path);

  /// Compares in constant time against every hash.
  bool accepts(std::string_view token);

  /// Why the file can't be used, one line; none when it can, or is merely absent.
  std::optional<std::string> problem() const;
  bool exists() const;

  /// Makes a token of 256 random bits, appends its hash (making the file, mode 0600, and its folder
  /// where they are absent) and returns the token. It can't be told from the file afterwards.
  static std::expected<std::string, std::string> add(const std::filesystem::path& path);

 private:
  using Hash = std::array<unsigned char, 32>;

  static Hash hashOf(std::string_view token);
  static std::expected<std::vector<Hash>, std::string> read(const std::filesystem::path& path);
  void reloadIfChanged();

  std::filesystem::path m_path;
  struct stat m_status = {};
  std::vector<Hash> m_hashes;
};

}  // namespace vemo::service
