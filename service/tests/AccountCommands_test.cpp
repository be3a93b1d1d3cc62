#include "accounts/AccountCommands.h"

#include "accounts/BearerTokens.h"
#include "setup/CommandLine.h"
#include "support/DatabaseTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;

class AccountCommandsTest : public DatabaseTest {
 protected:
  Account signIn(const std::string& subject, const std::string& name) {
    return Accounts(database())
        .signIn({.issuer = "https://issuer",
                 .subject = subject,
                 .email = subject + "@example.org",
                 .name = name},
                noon);
  }

  AccountSettings m_settings{.enabled = true, .database = m_address};
};
INSTANTIATE_TEST_SUITE_P(Both, AccountCommandsTest, bothDatabases, nameOf);

TEST_P(AccountCommandsTest, AccountsAreListedALineEach) {
  EXPECT_EQ(listAccounts(m_settings).value(), "");
  const auto ada = signIn("ada", "Ada");
  EXPECT_EQ(listAccounts(m_settings).value(), std::to_string(ada.id) + "\tada@example.org\tAda\n");
}

TEST_P(AccountCommandsTest, ANameCannotCommandTheTerminal) {
  signIn("ada",
         "A\x1B[2J\n\x7F\xC2\x9B"
         "31mé");
  EXPECT_THAT(listAccounts(m_settings).value(), HasSubstr("\tA?[2J???31mé\n"));
}

TEST_P(AccountCommandsTest, RevokingEndsEveryTokenOfTheOneWhoIsNamed) {
  const auto ada = signIn("ada", "Ada");
  const auto bob = signIn("bob", "Bob");
  BearerTokens tokens(database());
  const auto first = tokens.issue(ada.id, noon).value();
  const auto second = tokens.issue(ada.id, noon).value();
  const auto other = tokens.issue(bob.id, noon).value();
  EXPECT_EQ(revokeTokens(m_settings, "ada@example.org").value(),
            std::to_string(ada.id) + ": 2 tokens revoked\n");
  EXPECT_FALSE(tokens.accountOf(first, noon));
  EXPECT_FALSE(tokens.accountOf(second, noon));
  EXPECT_TRUE(tokens.accountOf(other, noon));
  EXPECT_EQ(revokeTokens(m_settings, std::to_string(bob.id)).value(),
            std::to_string(bob.id) + ": 1 token revoked\n");
  EXPECT_FALSE(tokens.accountOf(other, noon));
}

TEST_P(AccountCommandsTest, WhomNobodyKnowsIsAnError) {
  database();
  EXPECT_THAT(revokeTokens(m_settings, "nobody").error(), HasSubstr("no account"));
}

TEST_P(AccountCommandsTest, AnOldSchemaIsBroughtUpToDate) {
  Database(m_address).session() << "SELECT 1";
  EXPECT_EQ(listAccounts(m_settings).value(), "");
  EXPECT_EQ(schemaOf(database()), latestSchema());
}

TEST(AccountCommandsOffTest, WithoutAccountsTheCommandsSayHowToTurnThemOn) {
  EXPECT_THAT(listAccounts({}).error(), HasSubstr("enabled = yes"));
}

TEST(AccountCommandsOffTest, ADatabaseThatCannotBeOpenedIsOneLineWithoutItsPassword) {
  const AccountSettings settings{
      .enabled = true,
      .database = {.kind = DatabaseAddress::Kind::PostgreSql,
                   .place = "postgresql://vemo:secret@/none?host=/absent"}};
  const auto error = listAccounts(settings).error();
  EXPECT_THAT(error,
              testing::AllOf(HasSubstr("cannot be opened"), testing::Not(HasSubstr("secret"))));
}

TEST(CommandLineTest, CommandsOfAccountsAreUnderstood) {
  const auto parse = [](std::vector<const char*> arguments) {
    return CommandLine::parse(arguments);
  };
  EXPECT_EQ(parse({"accounts"})->action, CommandLine::Action::Accounts);
  EXPECT_EQ(parse({"stats"})->action, CommandLine::Action::Stats);
  EXPECT_EQ(parse({"revoke-tokens", "ada"})->action, CommandLine::Action::RevokeTokens);
  EXPECT_EQ(parse({"revoke-tokens", "ada"})->account, "ada");
  EXPECT_FALSE(parse({"revoke-tokens"}));
}

}  // namespace
}  // namespace vemo::service
