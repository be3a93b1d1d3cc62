#include "database/Migrations.h"

#include <sys/stat.h>

#include <thread>

#include "support/DatabaseTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;

class MigrationsTest : public DatabaseTest {
 protected:
  /// Names and columns of every table.
  std::string shapeOf(Database& database) {
    std::string shape;
    std::string name;
    const std::string query =
        GetParam() == DatabaseAddress::Kind::Sqlite
            ? "SELECT m.name || '.' || c.name || ' ' || c.type FROM sqlite_master m, "
              "pragma_table_info(m.name) c WHERE m.type = 'table' ORDER BY 1"
            : "SELECT table_name || '.' || column_name || ' ' || data_type FROM "
              "information_schema.columns WHERE table_schema = current_schema() ORDER BY 1";
    soci::statement statement = (database.session().prepare << query, soci::into(name));
    statement.execute();
    while (statement.fetch()) shape += name + "\n";
    return shape;
  }
  /// What a service of that schema may have stored.
  static void fill(Database& database, int schema) {
    auto& session = database.session();
    if (schema >= 1) {
      session
          << "INSERT INTO accounts (id, issuer, subject, name, created_at) VALUES (7, 'i', 's', "
             "'Ada', 1)";
      session
          << "INSERT INTO tokens (hash, account, created_at, last_used_day) VALUES ('h', 7, 1, 1)";
    }
    if (schema >= 2)
      session
          << "INSERT INTO dictionary_entries (account, id, phrase, replacement, position) VALUES "
             "(7, 1, 'p', 'r', 1)";
    if (schema >= 3) {
      session
          << "INSERT INTO usage_sums (account, words, cycle, cycle_words, milliseconds, "
             "ai_tokens, utterances, requests, last_active_at) VALUES (7, 1, 1, 1, 1, 1, 1, 1, 1)";
      session << "INSERT INTO counted_requests (account, hash, counted_at) VALUES (7, 'h', 1)";
    }
    if (schema >= 4) session << "INSERT INTO used_id_tokens (hash, expires_at) VALUES ('h', 1)";
    if (schema >= 5)
      session << "INSERT INTO provider_codes (code, challenge, nonce, expires_at) VALUES ('c', "
                 "'c', 'n', 1)";
    if (schema >= 6)
      session << "INSERT INTO events (account, device, app_version, name, props, happened_at, "
                 "received_day) VALUES (7, 'd', 'v', 'n', '{}', 1, 1)";
  }
};

TEST_P(MigrationsTest, EveryEarlierSchemaBecomesTheLatestAndKeepsItsRows) {
  const auto wanted = shapeOf(database());
  EXPECT_THAT(wanted, HasSubstr("accounts.id"));
  for (int earlier = 0; earlier < latestSchema(); ++earlier) {
    const TemporaryFolder folder;
    Database old(emptyDatabase(GetParam(), folder));
    ASSERT_TRUE(migrate(old, earlier));
    EXPECT_EQ(schemaOf(old), earlier);
    EXPECT_NE(shapeOf(old), wanted);
    fill(old, earlier);
    ASSERT_TRUE(migrate(old));
    EXPECT_EQ(schemaOf(old), latestSchema());
    EXPECT_EQ(shapeOf(old), wanted) << "from schema " << earlier;
    long long accounts = 0;
    long long words = 0;
    old.session() << "SELECT count(*) FROM accounts a, tokens t WHERE t.account = a.id",
        soci::into(accounts);
    old.session() << "SELECT count(*) FROM dictionary_entries", soci::into(words);
    EXPECT_EQ(accounts, earlier >= 1 ? 1 : 0);
    EXPECT_EQ(words, earlier >= 2 ? 1 : 0);
  }
}

TEST_P(MigrationsTest, TheLatestSchemaIsLeftAlone) {
  fill(database(), latestSchema());
  ASSERT_TRUE(migrate(database()));
  EXPECT_EQ(countOf("tokens"), 1);
}

TEST_P(MigrationsTest, InstancesThatStartAtOnceMigrateOnce) {
  std::vector<std::jthread> instances;
  std::atomic<int> good = 0;
  for (int index = 0; index < 4; ++index)
    instances.emplace_back([&] {
      Database own(m_address);
      if (migrate(own)) ++good;
    });
  instances.clear();
  EXPECT_EQ(good, 4);
  EXPECT_EQ(countOf("schema_version"), 1);
  EXPECT_EQ(schemaOf(database()), latestSchema());
}

TEST_P(MigrationsTest, ADatabaseOfANewerProgramIsRefusedAndLeftAlone) {
  database().session() << "UPDATE schema_version SET number = 99";
  const auto result = migrate(database());
  ASSERT_FALSE(result);
  EXPECT_THAT(result.error(), HasSubstr("newer version"));
  EXPECT_EQ(schemaOf(database()), 99);
}

TEST_P(MigrationsTest, AStepThatFailsLeavesTheSchemaAsItWas) {
  Database old(m_address);
  ASSERT_TRUE(migrate(old, 1));
  // A table in the way, as of an operator who tried something.
  old.session() << "CREATE TABLE usage_sums (x BIGINT)";
  EXPECT_THROW(static_cast<void>(migrate(old)), soci::soci_error);
  EXPECT_EQ(schemaOf(old), 1);
  old.session() << "DROP TABLE usage_sums";
  EXPECT_TRUE(migrate(old));
}

INSTANTIATE_TEST_SUITE_P(Both, MigrationsTest, bothDatabases, nameOf);

mode_t modeOf(const std::filesystem::path& file) {
  struct stat status = {};
  ::stat(file.c_str(), &status);
  return status.st_mode & 0777;
}

TEST(SqliteFileTest, NobodyElseCanReadIt) {
  const TemporaryFolder folder;
  const auto file = folder.path() / "new" / "accounts.db";
  const auto before = ::umask(0);
  Database database(DatabaseAddress::sqlite(file));
  ASSERT_TRUE(migrate(database));
  ::umask(before);
  EXPECT_EQ(modeOf(file), 0600U);
  EXPECT_EQ(modeOf(file.string() + "-wal"), 0600U);
  EXPECT_EQ(modeOf(file.string() + "-shm"), 0600U);
  EXPECT_EQ(modeOf(file.parent_path()), 0700U);
}

TEST(SqliteFileTest, OneThatOthersMayReadOrThatIsNoFileIsRefused) {
  const TemporaryFolder folder;
  const auto file = folder.write("open.db", "");
  std::filesystem::permissions(file, std::filesystem::perms::others_read,
                               std::filesystem::perm_options::add);
  EXPECT_THROW(Database(DatabaseAddress::sqlite(file)), soci::soci_error);
  EXPECT_THROW(Database(DatabaseAddress::sqlite("/dev/null")), soci::soci_error);
  EXPECT_THROW(Database(DatabaseAddress::sqlite("/proc/absent/x.db")), soci::soci_error);
}

TEST(DatabaseAddressTest, BothKindsAreReadAndOthersRefused) {
  EXPECT_EQ(DatabaseAddress::parse("sqlite:/a b/c.db")->place, "/a b/c.db");
  EXPECT_EQ(DatabaseAddress::parse("postgresql://u@h/d")->kind, DatabaseAddress::Kind::PostgreSql);
  for (const auto* text :
       {"", "sqlite:", "sqlite:relative.db", "sqlite:/a\"b", "mysql://h/d", "/a.db"})
    EXPECT_FALSE(DatabaseAddress::parse(text)) << text;
}

TEST(DatabaseAddressTest, APasswordIsSeenInBothPlacesThatTakeOne) {
  EXPECT_TRUE(DatabaseAddress::parse("postgresql://u:secret@h:5432/d")->holdsPassword());
  EXPECT_TRUE(DatabaseAddress::parse("postgresql://h/d?user=u&password=secret")->holdsPassword());
  EXPECT_FALSE(DatabaseAddress::parse("postgresql://u@h:5432/d")->holdsPassword());
  EXPECT_FALSE(DatabaseAddress::parse("postgresql://h:5432/d?host=/a@b:c")->holdsPassword());
}

}  // namespace
}  // namespace vemo::service
