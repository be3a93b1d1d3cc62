#include "accounts/Accounts.h"

#include <thread>

#include "accounts/BearerTokens.h"
#include "accounts/Dictionary.h"
#include "accounts/RateLimit.h"
#include "accounts/Secrets.h"
#include "accounts/SignInGuard.h"
#include "accounts/Usage.h"
#include "support/DatabaseTest.h"
#include "telemetry/TelemetryStore.h"

namespace vemo::service {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

class AccountsTest : public DatabaseTest {
 protected:
  Account signIn(const std::string& subject = "ada", Moment when = noon) {
    return Accounts(database())
        .signIn({.issuer = "https://issuer",
                 .subject = subject,
                 .email = subject + "@example.org",
                 .name = "Ada",
                 .avatar = "https://pictures/a"},
                when);
  }
  std::string issue(const Account& account, Moment when = noon) {
    return BearerTokens(database()).issue(account.id, when).value();
  }
  std::optional<AccountId> accountOf(const std::string& token, Moment when = noon) {
    return BearerTokens(database()).accountOf(token, when);
  }
  /// The tables that hold something of an account, by their columns.
  std::vector<std::string> tablesOfAccounts() {
    std::vector<std::string> tables;
    std::string name;
    const std::string query =
        GetParam() == DatabaseAddress::Kind::Sqlite
            ? "SELECT m.name FROM sqlite_master m, pragma_table_info(m.name) c WHERE m.type = "
              "'table' AND c.name = 'account'"
            : "SELECT table_name FROM information_schema.columns WHERE table_schema = "
              "current_schema() AND column_name = 'account'";
    soci::statement statement = (database().session().prepare << query, soci::into(name));
    statement.execute();
    while (statement.fetch()) tables.push_back(name);
    return tables;
  }
};

TEST_P(AccountsTest, ASecondSignInFindsTheSameAccountAndKeepsTheNameThatWasChosen) {
  const auto first = signIn();
  EXPECT_EQ(first.name, "Ada");
  ASSERT_TRUE(Accounts(database()).rename(first.id, "Countess"));
  const auto second = Accounts(database())
                          .signIn({.issuer = "https://issuer",
                                   .subject = "ada",
                                   .email = "new@example.org",
                                   .name = "Other"},
                                  noon + 1h);
  EXPECT_EQ(second.id, first.id);
  EXPECT_EQ(second.name, "Countess");
  EXPECT_EQ(second.email, "new@example.org");
  EXPECT_EQ(second.avatar, std::nullopt);
}

TEST_P(AccountsTest, TheSameSubjectOfAnotherIssuerIsSomebodyElse) {
  const auto first = signIn();
  const auto other =
      Accounts(database())
          .signIn({.issuer = "https://another", .subject = "ada", .email = first.email}, noon);
  EXPECT_NE(other.id, first.id);
  EXPECT_THAT(Accounts(database()).all(), SizeIs(2));
  EXPECT_THAT(Accounts(database()).named(*first.email), SizeIs(2));
  EXPECT_THAT(Accounts(database()).named(std::to_string(other.id)), ElementsAre(other));
  EXPECT_THAT(Accounts(database()).named("nobody"), IsEmpty());
}

TEST_P(AccountsTest, SignInsOfOneIdentityAtOnceMakeOneAccount) {
  database();
  std::vector<std::jthread> threads;
  for (int index = 0; index < 4; ++index)
    threads.emplace_back([this] {
      Database own(m_address);
      for (int round = 0; round < 20; ++round)
        Accounts(own).signIn({.issuer = "i", .subject = "s" + std::to_string(round)}, noon);
    });
  threads.clear();
  EXPECT_EQ(countOf("accounts"), 20);
}

TEST_P(AccountsTest, ATokenLeadsToItsAccountUntilItIsRevoked) {
  const auto ada = signIn();
  const auto bob = signIn("bob");
  const auto first = issue(ada);
  const auto second = issue(ada);
  const auto third = issue(bob);
  EXPECT_THAT(first, SizeIs(43));
  EXPECT_NE(first, second);
  EXPECT_EQ(accountOf(first), ada.id);
  EXPECT_EQ(accountOf(third), bob.id);
  EXPECT_EQ(accountOf(first + "x"), std::nullopt);
  EXPECT_EQ(accountOf(""), std::nullopt);
  EXPECT_EQ(accountOf("' OR 1=1 --"), std::nullopt);
  EXPECT_EQ(BearerTokens(database()).revokeAll(ada.id), 2);
  EXPECT_EQ(accountOf(first), std::nullopt);
  EXPECT_EQ(accountOf(second), std::nullopt);
  EXPECT_EQ(accountOf(third), bob.id);
}

TEST_P(AccountsTest, ATokensHashDoesNotServeAsTheToken) {
  const auto token = issue(signIn());
  EXPECT_EQ(accountOf(secretHash(token)), std::nullopt);
  long long clear = -1;
  database().session() << "SELECT count(*) FROM tokens WHERE hash = :token", soci::use(token),
      soci::into(clear);
  EXPECT_EQ(clear, 0);
}

TEST_P(AccountsTest, ATokenThatIsUsedLivesOnAndOneThatIsNotEnds) {
  const auto token = issue(signIn());
  constexpr auto limit = std::chrono::days(BearerTokens::unusedDays);
  EXPECT_TRUE(accountOf(token, noon + limit));
  EXPECT_TRUE(accountOf(token, noon + 2 * limit));
  EXPECT_FALSE(accountOf(token, noon + 3 * limit + 24h));
}

TEST_P(AccountsTest, AboveTheLimitTheTokenThatWasUnusedForLongestGoes) {
  const auto ada = signIn();
  const auto oldest = issue(ada);
  const auto used = issue(ada, noon + 1s);
  for (int index = 2; index < BearerTokens::tokensAnAccount; ++index) issue(ada, noon + 2s);
  EXPECT_TRUE(accountOf(used, noon + 48h));
  EXPECT_TRUE(accountOf(oldest));
  issue(ada, noon + 48h);
  EXPECT_FALSE(accountOf(oldest));
  EXPECT_TRUE(accountOf(used));
  EXPECT_EQ(countOf("tokens"), BearerTokens::tokensAnAccount);
}

TEST_P(AccountsTest, NoTokenIsIssuedForAnAccountThatIsGone) {
  const auto ada = signIn();
  EXPECT_TRUE(Accounts(database()).remove(ada.id));
  EXPECT_EQ(BearerTokens(database()).issue(ada.id, noon), std::nullopt);
}

TEST_P(AccountsTest, DeletionRemovesEveryRowOfTheAccountAndNoOther) {
  const auto ada = signIn();
  const auto bob = signIn("bob");
  for (const auto& account : {ada, bob}) {
    issue(account);
    Dictionary(database(), account.id).add("phrase", "replacement");
    Usage(database()).add(account.id, {.words = 1}, "key", noon);
    TelemetryStore store(database());
    store.addEvents(account.id, {.device = "d"},
                    std::vector{ReportedEvent{.name = "n", .props = "{}", .at = noon}}, noon);
    store.putDeviceReport(account.id, "d", "{}", noon);
  }
  EXPECT_THAT(tablesOfAccounts(), SizeIs(6));
  EXPECT_TRUE(Accounts(database()).remove(ada.id));
  EXPECT_FALSE(Accounts(database()).remove(ada.id));
  EXPECT_THAT(Accounts(database()).all(), ElementsAre(bob));
  for (const auto& table : tablesOfAccounts()) EXPECT_EQ(countOf(table), 1) << table;
  EXPECT_NE(signIn().id, ada.id);
}

TEST_P(AccountsTest, ADictionaryKeepsItsOrderAndBelongsToItsAccount) {
  Dictionary mine(database(), signIn().id);
  Dictionary theirs(database(), signIn("bob").id);
  const auto first = mine.add("zeta", "ζ\n'quoted' :name").value();
  const auto second = mine.add("alpha", "").value();
  EXPECT_THAT(mine.entries(), ElementsAre(first, second));
  EXPECT_THAT(theirs.entries(), IsEmpty());
  EXPECT_FALSE(theirs.remove(first.id));
  EXPECT_TRUE(mine.remove(first.id));
  EXPECT_FALSE(mine.remove(first.id));
  const auto third = mine.add("beta", "b").value();
  EXPECT_THAT(mine.entries(), ElementsAre(second, third));
}

TEST_P(AccountsTest, ADictionaryTakesItsLimitAndNotOneMore) {
  const auto account = signIn().id;
  Dictionary dictionary(database(), account);
  database().inTransaction([&] {
    for (long long index = 1; index < Dictionary::entriesAnAccount; ++index)
      database().session() << "INSERT INTO dictionary_entries (account, id, phrase, replacement, "
                              "position) VALUES (:account, :id, 'p', 'r', :position)",
          soci::use(account), soci::use(index), soci::use(index);
  });
  EXPECT_TRUE(dictionary.add("last", "one"));
  EXPECT_FALSE(dictionary.add("one", "more"));
  EXPECT_EQ(dictionary.entries().back().phrase, "last");
}

TEST_P(AccountsTest, UsageAddsUpAndACopyOfARequestCountsOnce) {
  const auto account = signIn().id;
  Usage usage(database());
  EXPECT_EQ(usage.of(account, noon), UsageSums{});
  const UsageStep step{.words = 7, .speech = 1500ms, .aiTokens = 3, .utterances = 1};
  EXPECT_TRUE(usage.add(account, step, "one", noon));
  EXPECT_FALSE(usage.add(account, step, "one", noon + 1s));
  EXPECT_TRUE(usage.add(account, step, "two", noon + 2s));
  EXPECT_EQ(usage.of(account, noon), (UsageSums{.words = 14,
                                                .cycleWords = 14,
                                                .speech = 3s,
                                                .aiTokens = 6,
                                                .utterances = 2,
                                                .requests = 2,
                                                .lastActive = noon + 2s}));
  EXPECT_EQ(usage.of(signIn("bob").id, noon), UsageSums{});
}

TEST_P(AccountsTest, TheCycleBeginsAnewWithTheMonthAndTheSumsGoOn) {
  const auto account = signIn().id;
  Usage usage(database());
  const Moment lastOfMarch = std::chrono::sys_days(std::chrono::year(2026) / 3 / 31) + 23h + 59min;
  usage.add(account, {.words = 5}, "one", lastOfMarch);
  EXPECT_EQ(usage.of(account, lastOfMarch).cycleWords, 5);
  EXPECT_EQ(usage.of(account, lastOfMarch + 1min).cycleWords, 0);
  usage.add(account, {.words = 2}, "two", lastOfMarch + 1min);
  EXPECT_EQ(usage.of(account, lastOfMarch + 1min).cycleWords, 2);
  EXPECT_EQ(usage.of(account, lastOfMarch + 1min).words, 7);
}

TEST_P(AccountsTest, UsageOfAnAccountThatIsGoneIsDropped) {
  EXPECT_FALSE(Usage(database()).add(12345, {.words = 1}, "one", noon));
  EXPECT_EQ(countOf("usage_sums"), 0);
}

TEST_P(AccountsTest, AttemptsAreCountedByMinuteAndSource) {
  RateLimit limit(database());
  for (int attempt = 0; attempt < 3; ++attempt) EXPECT_TRUE(limit.allow("here", 3, noon));
  EXPECT_FALSE(limit.allow("here", 3, noon + 59s));
  EXPECT_TRUE(limit.allow("there", 3, noon));
  EXPECT_TRUE(limit.allow("here", 3, noon + 60s));
}

TEST_P(AccountsTest, AnIdTokenCountsOnceEvenForInstancesAtOnce) {
  database();
  std::atomic<int> taken = 0;
  std::vector<std::jthread> threads;
  for (int index = 0; index < 4; ++index)
    threads.emplace_back([&] {
      Database own(m_address);
      for (int round = 0; round < 20; ++round)
        if (SignInGuard(own).useOnce("token" + std::to_string(round), noon)) ++taken;
    });
  threads.clear();
  EXPECT_EQ(taken, 20);
}

TEST_P(AccountsTest, WhatHasRunOutIsForgottenAndNothingElse) {
  const auto account = signIn().id;
  SignInGuard guard(database());
  RateLimit(database()).allow("here", 3, noon);
  guard.useOnce("token", noon);
  Usage(database()).add(account, {.words = 1}, "key", noon - Usage::remembered);
  guard.forgetOutdated(noon);
  EXPECT_EQ(countOf("sign_in_attempts"), 1);
  EXPECT_EQ(countOf("used_id_tokens"), 1);
  EXPECT_EQ(countOf("counted_requests"), 1);
  guard.forgetOutdated(noon + 61s);
  EXPECT_EQ(countOf("sign_in_attempts"), 0);
  EXPECT_EQ(countOf("used_id_tokens"), 0);
  EXPECT_EQ(countOf("counted_requests"), 0);
  EXPECT_EQ(countOf("usage_sums"), 1);
}

INSTANTIATE_TEST_SUITE_P(Both, AccountsTest, bothDatabases, nameOf);

TEST(SqliteAccountsTest, NothingOfADeletedAccountStaysInTheFile) {
  const TemporaryFolder folder;
  const auto file = folder.path() / "accounts.db";
  Database database(DatabaseAddress::sqlite(file));
  ASSERT_TRUE(migrate(database));
  const auto account = Accounts(database).signIn(
      {.issuer = "i", .subject = "s", .email = "telltale@example.org"}, noon);
  Dictionary(database, account.id).add("telltale phrase", "x");
  const auto everything = [&] { return readFile(file) + readFile(file.string() + "-wal"); };
  EXPECT_THAT(everything(), testing::HasSubstr("telltale"));
  EXPECT_TRUE(Accounts(database).remove(account.id));
  EXPECT_THAT(everything(), testing::Not(testing::HasSubstr("telltale")));
}

}  // namespace
}  // namespace vemo::service
