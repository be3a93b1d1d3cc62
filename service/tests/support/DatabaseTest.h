// The fixture of tests that hold both databases to the same promises.
#pragma once

#include <gmock/gmock.h>

#include "database/Migrations.h"
#include "support/PostgresServer.h"

namespace vemo::service {

inline constexpr std::chrono::sys_seconds noon{
    std::chrono::sys_days(std::chrono::year(2026) / 3 / 9) + std::chrono::hours(12)};

inline std::string nameOf(const testing::TestParamInfo<DatabaseAddress::Kind>& kind) {
  return kind.param == DatabaseAddress::Kind::Sqlite ? "Sqlite" : "PostgreSql";
}

inline const auto bothDatabases =
    testing::Values(DatabaseAddress::Kind::Sqlite, DatabaseAddress::Kind::PostgreSql);

/// An empty database, either kind.
inline DatabaseAddress emptyDatabase(DatabaseAddress::Kind kind, const TemporaryFolder& folder) {
  if (kind == DatabaseAddress::Kind::Sqlite)
    return DatabaseAddress::sqlite(folder.path() / "accounts.db");
  return DatabaseAddress::parse(PostgresServer::instance().makeDatabase()).value();
}

class DatabaseTest : public testing::TestWithParam<DatabaseAddress::Kind> {
 protected:
  Database& database() {
    if (m_database) return *m_database;
    m_database = std::make_unique<Database>(m_address);
    EXPECT_TRUE(migrate(*m_database));
    return *m_database;
  }
  long long countOf(const std::string& table) {
    long long count = -1;
    database().session() << "SELECT count(*) FROM " << table, soci::into(count);
    return count;
  }

  TemporaryFolder m_folder;
  DatabaseAddress m_address = emptyDatabase(GetParam(), m_folder);
  std::unique_ptr<Database> m_database;
};

}  // namespace vemo::service
