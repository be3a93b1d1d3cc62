// What a user costs the database: rows and bytes, a day and for good, and how fast the questions of
// a dictation are beside a million other accounts.
//
// usage: service_database_growth [USERS [ACCOUNTS]]
//
// USERS (1000) live two days as `oneDay` has it. Then ACCOUNTS (100000) more sign up, each with a
// token and counters, and the questions of a dictation are asked again. Prints one line a figure,
// for SQLite and PostgreSQL. Exits with 1 when a question becomes more than three times as slow.
#include <algorithm>
#include <cstdio>
#include <functional>

#include "accounts/BearerTokens.h"
#include "accounts/Dictionary.h"
#include "accounts/RateLimit.h"
#include "accounts/Secrets.h"
#include "accounts/SignInGuard.h"
#include "accounts/Usage.h"
#include "database/Migrations.h"
#include "support/PostgresServer.h"
#include "support/TemporaryFolder.h"
#include "telemetry/TelemetryStore.h"

using namespace vemo::service;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int dictationsADay = 40;
constexpr int eventsADay = 100;
constexpr int dictionaryEntries = 20;
constexpr double mostSlower = 3;

struct User {
  AccountId account;
  std::string token;
  std::string device;
};

std::vector<User> signUp(Database& database, int count, Moment now) {
  std::vector<User> users;
  database.inTransaction([&] {
    for (int index = 0; index < count; ++index) {
      const auto subject = std::to_string(index);
      const auto account =
          Accounts(database).signIn({.issuer = "https://issuer",
                                     .subject = "1000000000000000" + subject,
                                     .email = "somebody" + subject + "@example.org",
                                     .name = "Some Body",
                                     .avatar = "https://pictures/" + subject},
                                    now);
      for (int entry = 0; entry < dictionaryEntries; ++entry)
        Dictionary(database, account.id).add("what is said", "What is written");
      users.push_back({account.id, BearerTokens(database).issue(account.id, now).value(),
                       "E621E1F8-C36C-495A-93FC-" + std::to_string(100'000'000'000 + index)});
    }
  });
  return users;
}

void oneDay(Database& database, const std::vector<User>& users, Moment now) {
  const std::vector<ReportedEvent> events(
      eventsADay,
      {.name = "dictation_completed",
       .props = R"({"seconds":8.2,"words":21,"language":"en","model":"default","outputMode":)"
                R"("transcribe","chunked":false,"streamed":false,"latencyMs":412})",
       .at = now});
  const std::string report(600, 'r');
  for (const auto& user : users) {
    database.inTransaction([&] {
      BearerTokens(database).accountOf(user.token, now);
      for (int index = 0; index < dictationsADay; ++index)
        Usage(database).add(user.account, {.words = 21, .utterances = 1}, randomSecret(), now);
      TelemetryStore store(database);
      const Installation installation{.device = user.device, .appVersion = "1.2.3 (45)"};
      store.addEvents(user.account, installation, events, now);
      store.noteStart(installation, now);
      store.putDeviceReport(user.account, user.device, report, now);
    });
  }
  SignInGuard(database).forgetOutdated(now + std::chrono::hours(1));
}

long long rowsOf(Database& database) {
  long long rows = 0;
  for (const auto* table : {"accounts", "tokens", "dictionary_entries", "usage_sums", "events",
                            "installations", "device_reports", "counted_requests"}) {
    long long count = 0;
    database.session() << "SELECT count(*) FROM " << table, soci::into(count);
    rows += count;
  }
  return rows;
}

long long bytesOf(Database& database) {
  long long bytes = 0;
  if (database.kind() == DatabaseAddress::Kind::PostgreSql) {
    database.session() << "VACUUM FULL";
    database.session() << "SELECT pg_database_size(current_database())", soci::into(bytes);
    return bytes;
  }
  database.session() << "VACUUM";
  database.session() << "SELECT page_count * page_size FROM pragma_page_count, pragma_page_size",
      soci::into(bytes);
  return bytes;
}

/// The median of asking, in microseconds.
double medianOf(const std::function<void(int)>& question) {
  constexpr int rounds = 300;
  std::vector<double> times;
  for (int round = 0; round < rounds; ++round) {
    const auto start = Clock::now();
    question(round);
    times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  std::ranges::nth_element(times, times.begin() + rounds / 2);
  return times[rounds / 2];
}

struct Questions {
  double token;
  double count;
};

Questions ask(Database& database, const std::vector<User>& users, Moment now) {
  const auto userOf = [&](int round) {
    return users[static_cast<std::size_t>(round) % users.size()];
  };
  return {.token = medianOf(
              [&](int round) { BearerTokens(database).accountOf(userOf(round).token, now); }),
          .count = medianOf([&](int round) {
            Usage(database).add(userOf(round).account, {.words = 1}, randomSecret(), now);
          })};
}

void signUpOthers(Database& database, int count) {
  const bool isSqlite = database.kind() == DatabaseAddress::Kind::Sqlite;
  const std::string numbers =
      isSqlite ? "(WITH RECURSIVE s(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM s WHERE n < :most) "
                 "SELECT n FROM s)"
               : "(SELECT n FROM generate_series(1, :most) n)";
  const std::string hash = isSqlite ? "lower(hex(randomblob(21)))"
                                    : "md5(n::text) || substr(md5(n::text || 'x'), 1, 11)";
  if (!isSqlite) database.session() << "SET statement_timeout = 0";
  database.inTransaction([&] {
    auto& session = database.session();
    session << "INSERT INTO accounts (id, issuer, subject, email, name, created_at) SELECT n, "
               "'https://issuer', 'other' || n, 'somebody' || n || '@example.org', 'Some Body', 0 "
               "FROM " +
                   numbers + " numbers",
        soci::use(count, "most");
    session << "INSERT INTO tokens (hash, account, created_at, last_used_day) SELECT " + hash +
                   ", n, 0, 0 FROM " + numbers + " numbers",
        soci::use(count, "most");
    session << "INSERT INTO usage_sums (account, words, cycle, cycle_words, milliseconds, "
               "ai_tokens, utterances, requests, last_active_at) SELECT n, 1, 1, 1, 1, 1, 1, 1, 1 "
               "FROM " +
                   numbers + " numbers",
        soci::use(count, "most");
  });
}

bool measure(const char* name, const DatabaseAddress& address, int count, int others) {
  Database database(address);
  if (!migrate(database)) std::abort();
  const auto empty = bytesOf(database);
  const auto now = currentMoment();
  const auto users = signUp(database, count, now);
  const auto bytesSignedUp = bytesOf(database);
  const auto rowsSignedUp = rowsOf(database);
  oneDay(database, users, now);
  const auto bytesAfterOne = bytesOf(database);
  const auto rowsAfterOne = rowsOf(database);
  oneDay(database, users, now + std::chrono::days(1));
  const auto bytesAfterTwo = bytesOf(database);
  const auto rowsAfterTwo = rowsOf(database);
  const double perUser = 1.0 / count;
  const auto lasting = bytesAfterOne - empty - (bytesAfterTwo - bytesAfterOne);
  std::printf("%-10s for good: %6.0f bytes, %5.1f rows a user (%.0f bytes at sign-up)\n", name,
              static_cast<double>(lasting) * perUser,
              static_cast<double>(2 * rowsAfterOne - rowsAfterTwo) * perUser,
              static_cast<double>(bytesSignedUp - empty) * perUser);
  std::printf("%-10s a day:    %6.0f bytes, %5.1f rows a user (%lld rows at sign-up)\n", name,
              static_cast<double>(bytesAfterTwo - bytesAfterOne) * perUser,
              static_cast<double>(rowsAfterTwo - rowsAfterOne) * perUser, rowsSignedUp / count);

  const auto few = ask(database, users, now);
  signUpOthers(database, others);
  const auto many = ask(database, users, now);
  std::printf(
      "%-10s token check %5.0f us, counting %5.0f us; beside %d more accounts %5.0f us and "
      "%5.0f us\n",
      name, few.token, few.count, others, many.token, many.count);
  return many.token < mostSlower * few.token && many.count < mostSlower * few.count;
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const int users = argc > 1 ? std::stoi(argv[1]) : 1000;
  const int others = argc > 2 ? std::stoi(argv[2]) : 100'000;
  const TemporaryFolder folder;
  const bool sqlite =
      measure("SQLite", DatabaseAddress::sqlite(folder.path() / "accounts.db"), users, others);
  const bool postgres = measure(
      "PostgreSQL", DatabaseAddress::parse(PostgresServer::instance().makeDatabase()).value(),
      users, others);
  std::puts(sqlite && postgres ? "good" : "NOT GOOD");
  return sqlite && postgres ? 0 : 1;
}
