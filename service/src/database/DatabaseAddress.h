// Where the database is. A plain value.
#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

namespace vemo::service {

struct DatabaseAddress {
  enum class Kind { Sqlite, PostgreSql };

  Kind kind = Kind::Sqlite;
  std::string place;  ///< the file, or the postgresql:// address

  /// "sqlite:" and an absolute path, or "postgresql://…" as libpq reads it.
  static std::expected<DatabaseAddress, std::string> parse(std::string_view text);
  static DatabaseAddress sqlite(const std::filesystem::path& file) {
    return {Kind::Sqlite, file.string()};
  }
  bool holdsPassword() const;
};

}  // namespace vemo::service
