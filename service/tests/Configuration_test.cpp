#include "setup/Configuration.h"

#include <gmock/gmock.h>

#include "setup/CommandLine.h"
#include "support/TemporaryFolder.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

class ConfigurationTest : public testing::Test {
 protected:
  std::expected<Configuration, std::string> read(const std::string& text) {
    return Configuration::read(m_folder.write("service.conf", text));
  }
  std::string errorFor(const std::string& text) {
    const auto configuration = read(text);
    return configuration ? "" : configuration.error();
  }

  TemporaryFolder m_folder;
};

TEST_F(ConfigurationTest, AnEmptyFileMeansLoopbackAndTheEmbeddedEngine) {
  const auto configuration = read("");
  ASSERT_TRUE(configuration);
  EXPECT_EQ(configuration->address, "127.0.0.1");
  EXPECT_EQ(configuration->port, 8750);
  EXPECT_EQ(configuration->engine, Configuration::EngineName::Pocketsphinx);
  EXPECT_GE(configuration->effectiveWorkers(), 1U);
  EXPECT_LE(configuration->effectiveWorkers(), 2U);
}

TEST_F(ConfigurationTest, EveryKeyIsTaken) {
  const auto configuration = read(
      "; a comment\n# another\n"
      "[server]\naddress = ::1\nport = 0\ntokens-file = /t\n"
      "[engine]\nname = openai\nworkers = 3\nwaiting = 0\n"
      "[pocketsphinx]\nacoustic-model = /a\nlanguage-model = /l\ndictionary = /d\n"
      "[openai]\naddress = https://host/prefix/\nmodel = big\nkey-file = /k\n"
      "certificate-authorities = /c\ntimeout-seconds = 1.5\n"
      "[limits]\nbody-bytes = 1000\nheader-bytes = 256\nconnections = 5\nheader-seconds = 0.25\n"
      "body-seconds = 2\nanswer-seconds = 3\nidle-seconds = 4\nshutdown-seconds = 5\n"
      "refused-seconds = 6\nrepeat-seconds = 7\nrepeat-answers = 0\n");
  ASSERT_TRUE(configuration) << configuration.error();
  EXPECT_EQ(configuration->address, "::1");
  EXPECT_EQ(configuration->port, 0);
  EXPECT_EQ(configuration->tokensFile, "/t");
  EXPECT_EQ(configuration->engine, Configuration::EngineName::OpenAi);
  EXPECT_EQ(configuration->effectiveWorkers(), 3U);
  EXPECT_EQ(configuration->waiting, 0U);
  EXPECT_EQ(configuration->pocketsphinx.acousticModel, "/a");
  EXPECT_EQ(configuration->pocketsphinx.languageModel, "/l");
  EXPECT_EQ(configuration->pocketsphinx.dictionary, "/d");
  EXPECT_EQ(configuration->openAi.address, "https://host/prefix");
  EXPECT_EQ(configuration->openAi.model, "big");
  EXPECT_EQ(configuration->openAi.keyFile, "/k");
  EXPECT_EQ(configuration->openAi.certificateAuthorities, "/c");
  EXPECT_EQ(configuration->openAi.timeout, 1500ms);
  EXPECT_EQ(configuration->limits.bodyBytes, 1000U);
  EXPECT_EQ(configuration->limits.headerBytes, 256U);
  EXPECT_EQ(configuration->limits.connections, 5U);
  EXPECT_EQ(configuration->limits.headerTime, 250ms);
  EXPECT_EQ(configuration->limits.bodyTime, 2s);
  EXPECT_EQ(configuration->limits.answerTime, 3s);
  EXPECT_EQ(configuration->limits.idleTime, 4s);
  EXPECT_EQ(configuration->limits.shutdownTime, 5s);
  EXPECT_EQ(configuration->limits.refusedTime, 6s);
  EXPECT_EQ(configuration->limits.repeatTime, 7s);
  EXPECT_EQ(configuration->limits.repeatAnswers, 0U);
}

TEST_F(ConfigurationTest, EveryKeyOfAccountsIsTaken) {
  const auto configuration = read(
      "[server]\nbehind-proxy = yes\n[accounts]\nenabled = yes\n"
      "database = postgresql://vemo@db/vemo\nclient-identifiers = one.two, three\n"
      "issuers = https://issuer other\njwks-address = https://issuer/keys\n"
      "sign-ins-a-minute = 3\nbeta-updates = yes\n"
      "[telemetry]\nenabled = no\nkept-days = 7\n");
  ASSERT_TRUE(configuration) << configuration.error();
  const auto& accounts = configuration->accounts;
  EXPECT_TRUE(configuration->behindProxy);
  EXPECT_TRUE(accounts.enabled);
  EXPECT_EQ(accounts.database.kind, DatabaseAddress::Kind::PostgreSql);
  EXPECT_EQ(accounts.database.place, "postgresql://vemo@db/vemo");
  EXPECT_THAT(accounts.clientIdentifiers, testing::ElementsAre("one.two", "three"));
  EXPECT_THAT(accounts.issuers, testing::ElementsAre("https://issuer", "other"));
  EXPECT_EQ(accounts.jwksAddress, "https://issuer/keys");
  EXPECT_EQ(accounts.signInsAMinute, 3);
  EXPECT_TRUE(accounts.betaUpdates);
  EXPECT_FALSE(configuration->telemetry.enabled);
  EXPECT_EQ(configuration->telemetry.keptDays, 7);
}

TEST_F(ConfigurationTest, AccountsAreOffAndWouldLiveInAFileOfTheDataFolder) {
  const auto configuration = read("");
  ASSERT_TRUE(configuration);
  EXPECT_FALSE(configuration->accounts.enabled);
  EXPECT_EQ(configuration->accounts.database.kind, DatabaseAddress::Kind::Sqlite);
  EXPECT_EQ(configuration->accounts.database.place,
            (Configuration::dataFolder() / "accounts.db").string());
}

TEST_F(ConfigurationTest, EveryKeyOfTheLocalProviderIsTaken) {
  const auto configuration = read(
      "[accounts]\nenabled = yes\n[local-provider]\nenabled = yes\naddress = ::1\nport = 0\n"
      "client-identifier = my.own-app\nname = Ada\nemail = ada@example.org\nkey-file = /k\n");
  ASSERT_TRUE(configuration) << configuration.error();
  const auto& provider = configuration->localProvider;
  EXPECT_TRUE(provider.enabled);
  EXPECT_EQ(provider.address, "::1");
  EXPECT_EQ(provider.port, 0);
  EXPECT_EQ(provider.redirectUri(), "own-app.my:/oauth2redirect");
  EXPECT_EQ(provider.completed().name, "Ada");
  EXPECT_EQ(provider.completed().email, "ada@example.org");
  EXPECT_EQ(provider.keyFile, "/k");
}

TEST_F(ConfigurationTest, TheLocalProviderIsOffAndTellsTheLogin) {
  const auto provider = read("").value().localProvider;
  EXPECT_FALSE(provider.enabled);
  EXPECT_EQ(provider.address, "127.0.0.1");
  EXPECT_EQ(provider.redirectUri(), "brelmox.vemo.desktop:/oauth2redirect");
  EXPECT_FALSE(provider.completed().name.empty());
  EXPECT_THAT(provider.completed().email, testing::EndsWith("@localhost"));
}

TEST_F(ConfigurationTest, TheLocalProviderStaysOnLoopbackAndNeedsAccounts) {
  for (const auto* text :
       {"[local-provider]\naddress = 0.0.0.0", "[local-provider]\naddress = 192.168.1.2",
        "[local-provider]\naddress = localhost", "[local-provider]\nclient-identifier = vemo",
        "[local-provider]\nclient-identifier = a.1", "[local-provider]\nclient-identifier = A.b",
        "[local-provider]\nclient-identifier = a..b"})
    EXPECT_THAT(errorFor(text), HasSubstr("must be")) << text;
  EXPECT_THAT(errorFor("[local-provider]\nenabled = yes"),
              HasSubstr("[local-provider] needs enabled = yes in [accounts]"));
}

TEST_F(ConfigurationTest, AValueThatDoesNotParseIsOneClearLine) {
  for (const auto* text :
       {"[server]\nport = 65536", "[server]\nport = -1", "[server]\nport = 80a", "[server]\nport =",
        "[server]\naddress = localhost", "[engine]\nname = other", "[engine]\nworkers = 0",
        "[engine]\nworkers = 65", "[accounts]\nenabled = true", "[accounts]\ndatabase = mysql://x",
        "[accounts]\nclient-identifiers = ,", "[accounts]\nsign-ins-a-minute = 0",
        "[limits]\nbody-bytes = 43", "[limits]\nheader-seconds = 0",
        "[limits]\nheader-seconds = nan", "[limits]\nheader-seconds = 1s",
        "[openai]\naddress = ftp://host", "[server]\ntokens-file ="}) {
    const auto error = errorFor(text);
    EXPECT_THAT(error, HasSubstr("must be")) << text;
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
  EXPECT_EQ(errorFor("[server]\nport = 65535"), "");
  EXPECT_EQ(errorFor("[limits]\nbody-bytes = 44"), "");
}

TEST_F(ConfigurationTest, AKeyThatNobodyKnowsIsAnError) {
  EXPECT_THAT(errorFor("[server]\nprot = 1"), HasSubstr("unknown key prot"));
  EXPECT_THAT(errorFor("[nothing]\nport = 1"), HasSubstr("unknown key port in [nothing]"));
  EXPECT_THAT(errorFor("port = 1"), HasSubstr("outside a section"));
}

TEST_F(ConfigurationTest, ALineWithoutMeaningIsToldByItsNumber) {
  EXPECT_THAT(errorFor("[server]\nwhat is this\n"), HasSubstr("line 2"));
}

TEST_F(ConfigurationTest, OpenAiWithoutAnAddressIsAnError) {
  EXPECT_THAT(errorFor("[engine]\nname = openai"), HasSubstr("needs an address"));
}

TEST_F(ConfigurationTest, AFileThatWasNamedMustBeThere) {
  EXPECT_FALSE(Configuration::read(m_folder.path() / "absent.conf"));
}

TEST(CommandLineTest, ActionsAndTheConfigurationFileAreUnderstood) {
  const char* both[] = {"--config", "/c", "add-token"};
  EXPECT_EQ(CommandLine::parse(both)->action, CommandLine::Action::AddToken);
  EXPECT_EQ(CommandLine::parse(both)->configurationFile, "/c");
  const char* joined[] = {"--config=/d=e"};
  EXPECT_EQ(CommandLine::parse(joined)->configurationFile, "/d=e");
  const char* help[] = {"--help"};
  EXPECT_EQ(CommandLine::parse(help)->action, CommandLine::Action::Help);
  EXPECT_EQ(CommandLine::parse({})->action, CommandLine::Action::Serve);
}

TEST(CommandLineTest, WhatIsNotUnderstoodIsAnError) {
  const char* unknown[] = {"--port"};
  EXPECT_FALSE(CommandLine::parse(unknown));
  const char* cut[] = {"--config"};
  EXPECT_FALSE(CommandLine::parse(cut));
}

}  // namespace
}  // namespace vemo::service
