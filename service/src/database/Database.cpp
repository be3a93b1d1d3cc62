#include "database/Database.h"

#include <soci/postgresql/soci-postgresql.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <sys/stat.h>

#include <boost/url.hpp>
#include <cerrno>
#include <cstring>

namespace vemo::service {

namespace {

/// Nobody else's reach from the first byte on; the files beside it inherit the mode. The file is
/// not opened for this: to close it would drop the locks that other connections of this process
/// hold on it, and a program that comes and goes would take their write-ahead log away.
void makePrivateFile(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::create_directories(path.parent_path(), error))
    std::filesystem::permissions(path.parent_path(), std::filesystem::perms::owner_all, error);
  const auto fail = [&path](const std::string& reason) {
    throw soci::soci_error(path.string() + ": " + reason);
  };
  if (::mknod(path.c_str(), S_IFREG | S_IRUSR | S_IWUSR, 0) != 0 && errno != EEXIST)
    fail(std::strerror(errno));
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) fail(std::strerror(errno));
  if (!S_ISREG(status.st_mode)) fail("is not a regular file");
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) fail("others may read it; run chmod 600 on it");
}

/// Adds what an operator leaves open: how soon a server that doesn't answer counts as gone.
std::string withTimeLimits(std::string address) {
  const auto add = [&address](std::string_view name, std::string_view value) {
    if (address.find(name) != std::string::npos) return;
    address += address.find('?') == std::string::npos ? '?' : '&';
    address.append(name).append("=").append(value);
  };
  add("connect_timeout", "5");
  add("tcp_user_timeout", "10000");
  add("application_name", "vemo-service");
  return address;
}

soci::connection_parameters parametersOf(const DatabaseAddress& address) {
  if (address.kind == DatabaseAddress::Kind::PostgreSql)
    return {soci::postgresql, withTimeLimits(address.place)};
  makePrivateFile(address.place);
  return {soci::sqlite3, "db=\"" + address.place + "\" timeout=10"};
}

}  // namespace

std::expected<DatabaseAddress, std::string> DatabaseAddress::parse(std::string_view text) {
  constexpr std::string_view sqlite = "sqlite:";
  if (text.starts_with(sqlite)) {
    text.remove_prefix(sqlite.size());
    if (!text.starts_with('/') || text.find('"') != std::string_view::npos)
      return std::unexpected("needs an absolute path");
    return DatabaseAddress{Kind::Sqlite, std::string(text)};
  }
  if (text.starts_with("postgresql://"))
    return DatabaseAddress{Kind::PostgreSql, std::string(text)};
  return std::unexpected("is neither sqlite: nor postgresql://");
}

bool DatabaseAddress::holdsPassword() const {
  if (kind != Kind::PostgreSql) return false;
  if (place.find("password=") != std::string::npos) return true;
  const auto authority = place.substr(0, place.find('/', std::strlen("postgresql://")));
  const auto at = authority.rfind('@');
  return at != std::string::npos &&
         authority.substr(std::strlen("postgresql://"), at - std::strlen("postgresql://"))
                 .find(':') != std::string::npos;
}

Database::Database(DatabaseAddress address)
    : m_address(std::move(address)), m_session(parametersOf(m_address)) {
  prepare();
}

void Database::prepare() {
  if (kind() == DatabaseAddress::Kind::PostgreSql) {
    auto* backend = static_cast<soci::postgresql_session_backend*>(m_session.get_backend());
    // The library would print the server's remarks, and these quote rows.
    PQsetNoticeProcessor(backend->conn_, [](void*, const char*) {}, nullptr);
    m_session << "SET statement_timeout = '10s'";
    return;
  }
  std::string mode;
  m_session << "PRAGMA journal_mode = WAL", soci::into(mode);
  m_session << "PRAGMA synchronous = NORMAL";
  m_session << "PRAGMA foreign_keys = ON";
  // What an account's deletion removes doesn't stay readable in the file.
  m_session << "PRAGMA secure_delete = ON";
}

Database::Transaction::Transaction(Database& database) : m_database(database) {
  const bool isSqlite = database.kind() == DatabaseAddress::Kind::Sqlite;
  database.session() << (isSqlite ? "BEGIN IMMEDIATE" : "BEGIN");
  database.m_inTransaction = true;
}

Database::Transaction::~Transaction() {
  m_database.m_inTransaction = false;
  if (!m_open) return;
  try {
    m_database.session() << "ROLLBACK";
  } catch (const soci::soci_error&) {
    // A connection that is gone has taken its transaction with it.
  }
}

void Database::Transaction::commit() {
  m_database.session() << "COMMIT";
  m_open = false;
}

long long changedRows(soci::statement statement) {
  statement.execute(true);
  return statement.get_affected_rows();
}

}  // namespace vemo::service
