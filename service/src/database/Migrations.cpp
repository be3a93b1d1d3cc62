#include "database/Migrations.h"

#include <array>
#include <span>

namespace vemo::service {

namespace {

/// Both databases take these words. Hashes are SHA-256 in base64url, times are seconds since 1970,
/// days are days since 1970.
constexpr auto accounts = std::to_array<const char*>({
    "CREATE TABLE accounts (id BIGINT PRIMARY KEY, issuer TEXT NOT NULL, subject TEXT NOT NULL, "
    "email TEXT, name TEXT, avatar TEXT, created_at BIGINT NOT NULL, UNIQUE (issuer, subject))",
    "CREATE TABLE tokens (hash TEXT PRIMARY KEY, account BIGINT NOT NULL REFERENCES accounts (id) "
    "ON DELETE CASCADE, created_at BIGINT NOT NULL, last_used_day BIGINT NOT NULL)",
    "CREATE INDEX tokens_of_account ON tokens (account)",
});

constexpr auto dictionary = std::to_array<const char*>({
    "CREATE TABLE dictionary_entries (account BIGINT NOT NULL REFERENCES accounts (id) ON DELETE "
    "CASCADE, id BIGINT NOT NULL, phrase TEXT NOT NULL, replacement TEXT NOT NULL, position BIGINT "
    "NOT NULL, PRIMARY KEY (account, id))",
});

/// Sums stand in one row an account; the row of a counted request lives for minutes, so that a copy
/// that another instance answers isn't counted again.
constexpr auto usage = std::to_array<const char*>({
    "CREATE TABLE usage_sums (account BIGINT PRIMARY KEY REFERENCES accounts (id) ON DELETE "
    "CASCADE, words BIGINT NOT NULL, cycle BIGINT NOT NULL, cycle_words BIGINT NOT NULL, "
    "milliseconds BIGINT NOT NULL, ai_tokens BIGINT NOT NULL, utterances BIGINT NOT NULL, requests "
    "BIGINT NOT NULL, last_active_at BIGINT NOT NULL)",
    "CREATE TABLE counted_requests (account BIGINT NOT NULL REFERENCES accounts (id) ON DELETE "
    "CASCADE, hash TEXT NOT NULL, counted_at BIGINT NOT NULL, PRIMARY KEY (account, hash))",
    "CREATE INDEX counted_requests_by_age ON counted_requests (counted_at)",
});

constexpr auto signIn = std::to_array<const char*>({
    "CREATE TABLE sign_in_attempts (source TEXT NOT NULL, minute BIGINT NOT NULL, attempts BIGINT "
    "NOT NULL, PRIMARY KEY (source, minute))",
    "CREATE TABLE used_id_tokens (hash TEXT PRIMARY KEY, expires_at BIGINT NOT NULL)",
    "CREATE INDEX used_id_tokens_by_age ON used_id_tokens (expires_at)",
});

constexpr auto localProvider = std::to_array<const char*>({
    "CREATE TABLE provider_requests (ticket TEXT PRIMARY KEY, challenge TEXT NOT NULL, state TEXT "
    "NOT NULL, nonce TEXT NOT NULL, expires_at BIGINT NOT NULL)",
    "CREATE TABLE provider_codes (code TEXT PRIMARY KEY, challenge TEXT NOT NULL, nonce TEXT NOT "
    "NULL, expires_at BIGINT NOT NULL)",
});

/// Events have no key of their own: nobody asks for a single one.
constexpr auto telemetry = std::to_array<const char*>({
    "CREATE TABLE installations (device TEXT PRIMARY KEY, platform TEXT NOT NULL, app_version TEXT "
    "NOT NULL, os_version TEXT NOT NULL, model TEXT NOT NULL, locale TEXT, time_zone TEXT, "
    "first_day BIGINT NOT NULL, last_day BIGINT NOT NULL, starts BIGINT NOT NULL)",
    "CREATE TABLE events (account BIGINT REFERENCES accounts (id) ON DELETE CASCADE, device TEXT "
    "NOT NULL, app_version TEXT NOT NULL, name TEXT NOT NULL, props TEXT NOT NULL, happened_at "
    "BIGINT NOT NULL, received_day BIGINT NOT NULL)",
    "CREATE INDEX events_of_account ON events (account)",
    "CREATE INDEX events_by_age ON events (received_day)",
    "CREATE TABLE device_reports (account BIGINT NOT NULL REFERENCES accounts (id) ON DELETE "
    "CASCADE, device TEXT NOT NULL, report TEXT NOT NULL, received_at BIGINT NOT NULL, PRIMARY KEY "
    "(account, device))",
});

constexpr auto steps = std::to_array<std::span<const char* const>>(
    {accounts, dictionary, usage, signIn, localProvider, telemetry});

/// Any number that no other program uses for the same purpose.
constexpr auto lockOfThisProgram = "SELECT pg_advisory_xact_lock(8750131720)";

bool hasVersionTable(Database& database) {
  int count = 0;
  if (database.kind() == DatabaseAddress::Kind::Sqlite)
    database.session() << "SELECT count(*) FROM sqlite_master WHERE name = 'schema_version'",
        soci::into(count);
  else
    database.session() << "SELECT count(*) FROM pg_tables WHERE tablename = 'schema_version' AND "
                          "schemaname = current_schema()",
        soci::into(count);
  return count > 0;
}

}  // namespace

int latestSchema() {
  return static_cast<int>(steps.size());
}

int schemaOf(Database& database) {
  if (!hasVersionTable(database)) return 0;
  int number = 0;
  database.session() << "SELECT number FROM schema_version", soci::into(number);
  return number;
}

std::expected<void, std::string> migrate(Database& database, int target) {
  return database.inTransaction([&]() -> std::expected<void, std::string> {
    auto& session = database.session();
    if (database.kind() == DatabaseAddress::Kind::PostgreSql) session << lockOfThisProgram;
    const int present = schemaOf(database);
    if (present > latestSchema())
      return std::unexpected("the database is of a newer version of this program (schema " +
                             std::to_string(present) + ", known are " +
                             std::to_string(latestSchema()) + ")");
    if (present == 0) {
      session << "CREATE TABLE IF NOT EXISTS schema_version (number BIGINT NOT NULL)";
      session << "INSERT INTO schema_version (number) VALUES (0)";
    }
    for (int number = present + 1; number <= target; ++number) {
      for (const char* statement : steps[static_cast<std::size_t>(number - 1)])
        session << statement;
      session << "UPDATE schema_version SET number = :number", soci::use(number);
    }
    return {};
  });
}

}  // namespace vemo::service
