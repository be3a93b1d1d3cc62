#include "accounts/AccountApi.h"

#include "support/AccountServiceTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

class AccountApiTest : public AccountServiceTest {
 protected:
  RawAnswer rename(const std::string& token, std::string_view body) {
    return ask("PATCH", "/auth/profile", token, body);
  }
  RawAnswer add(const std::string& token, std::string_view body) {
    return ask("POST", "/dictionary", token, body);
  }
  boost::json::array dictionary(const std::string& token) {
    return objectIn(ask("GET", "/dictionary", token)).at("dictionary").as_array();
  }
};
INSTANTIATE_TEST_SUITE_P(Each, AccountApiTest, everyDeployment, deploymentName);

TEST_P(AccountApiTest, AProfileTellsWhoTheCountersAndWhetherBetasMayBeHad) {
  m_settings.accounts.betaUpdates = true;
  const auto answer = ask("GET", "/desktop/auth/profile", signIn());
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(objectIn(answer).at("status").as_string(), "success");
  const auto user = objectIn(answer).at("user").as_object();
  EXPECT_EQ(user.at("email").as_string(), "ada@example.org");
  EXPECT_EQ(user.at("name").as_string(), "Ada");
  EXPECT_EQ(user.at("avatarUrl").as_string(), "https://pictures/ada");
  EXPECT_EQ(boost::json::serialize(user.at("updates")), R"({"betaEligible":true})");
  EXPECT_EQ(user.at("consumption").as_object().at("totalWordsTranscribed").as_int64(), 0);
  EXPECT_FALSE(user.at("consumption").as_object().contains("lastActiveAt"));
}

TEST_P(AccountApiTest, ANameIsChangedAndStaysAtTheNextSignIn) {
  const auto token = signIn();
  const auto answer = rename(token, R"({"name":" Grace 'H' "})");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(objectIn(answer).at("user").as_object().at("name").as_string(), "Grace 'H'");
  EXPECT_EQ(profile(token).at("name").as_string(), "Grace 'H'");
  EXPECT_EQ(profile(signIn()).at("name").as_string(), "Grace 'H'");
}

TEST_P(AccountApiTest, ANameThatCannotBeUnderstoodIsABadRequest) {
  const auto token = signIn();
  for (const auto* body : {"", "{", "[]", "{}", R"({"name":7})", R"({"name":""})",
                           R"({"name":"  "})", R"({"name":"a\u0000"})", "{\"name\":\"\xFF\"}"})
    EXPECT_EQ(rename(token, body).status, 400) << body;
  const auto named = [](std::size_t length) {
    return R"({"name":")" + std::string(length, 'n') + "\"}";
  };
  EXPECT_EQ(rename(token, named(400)).status, 200);
  EXPECT_EQ(rename(token, named(401)).status, 400);
  EXPECT_EQ(rename(token, std::string(64 * 1024, ' ')).status, 400);
  EXPECT_EQ(rename(token, std::string(64 * 1024 + 1, ' ')).status, 413);
}

TEST_P(AccountApiTest, ADeletedAccountTakesEverythingAlongAndItsTokensEnd) {
  const auto first = signIn();
  const auto second = signIn();
  const auto other = signIn("bob");
  add(first, R"({"phrase":"p","replacement":"r"})");
  const auto identifier = profile(first).at("id");
  const auto answer = ask("DELETE", "/desktop/auth/account", first);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, R"({"status":"success"})");
  for (const auto& token : {first, second}) {
    EXPECT_EQ(ask("GET", "/desktop/auth/profile", token).status, 401);
    EXPECT_EQ(ask("DELETE", "/desktop/auth/account", token).status, 401);
    EXPECT_EQ(ask("POST", "/desktop/dictate", token, WavFile{}.bytes()).status, 401);
  }
  EXPECT_EQ(ask("GET", "/desktop/auth/profile", other).status, 200);
  const auto again = signIn();
  EXPECT_NE(profile(again).at("id"), identifier);
  EXPECT_TRUE(dictionary(again).empty());
}

TEST_P(AccountApiTest, WordsAreAddedListedAndRemoved) {
  const auto token = signIn();
  EXPECT_TRUE(dictionary(token).empty());
  const auto added = add(token, R"({"phrase":"vee mo","replacement":"Vemo\n\"x\""})");
  EXPECT_EQ(added.status, 201);
  EXPECT_EQ(objectIn(added).at("status").as_string(), "success");
  const auto entry = objectIn(added).at("entry").as_object();
  EXPECT_EQ(entry.at("phrase").as_string(), "vee mo");
  EXPECT_EQ(entry.at("replacement").as_string(), "Vemo\n\"x\"");
  EXPECT_EQ(add(token, R"({"phrase":"a","replacement":""})").status, 201);
  const auto words = dictionary(signIn());
  ASSERT_EQ(words.size(), 2U);
  EXPECT_EQ(words[0], entry);
  const auto path = "/dictionary/" + std::string(entry.at("id").as_string());
  EXPECT_EQ(ask("DELETE", path, token).body, R"({"status":"success"})");
  EXPECT_EQ(ask("DELETE", path, token).status, 404);
  EXPECT_EQ(dictionary(token).size(), 1U);
}

TEST_P(AccountApiTest, AnEntryThatNobodyHasIsNotFound) {
  const auto token = signIn();
  const auto others = objectIn(add(signIn("bob"), R"({"phrase":"a","replacement":"b"})"));
  const auto theirs = "/dictionary/" + std::string(others.at("entry").at("id").as_string());
  for (const auto& path :
       {theirs, std::string("/dictionary/0"), std::string("/dictionary/-1"),
        std::string("/dictionary/99999999999999999999"), std::string("/dictionary/1%20"),
        std::string("/dictionary/E621E1F8-C36C-495A-93FC-0C247A3E6E5F")})
    EXPECT_EQ(ask("DELETE", path, token).status, 404) << path;
  EXPECT_EQ(dictionary(signIn("bob")).size(), 1U);
}

TEST_P(AccountApiTest, WordsThatCannotBeUnderstoodAreABadRequest) {
  const auto token = signIn();
  for (const auto* body :
       {"", "{", "[]", "{}", R"({"phrase":"a"})", R"({"replacement":"a"})",
        R"({"phrase":"","replacement":"a"})", R"({"phrase":1,"replacement":"a"})",
        R"({"phrase":"a","replacement":null})", R"({"phrase":"a\u0000","replacement":"a"})"})
    EXPECT_EQ(add(token, body).status, 400) << body;
  const auto phrase = [](std::size_t length) {
    return R"({"replacement":"r","phrase":")" + std::string(length, 'p') + "\"}";
  };
  EXPECT_EQ(add(token, phrase(1000)).status, 201);
  EXPECT_EQ(add(token, phrase(1001)).status, 400);
}

TEST_P(AccountApiTest, WithoutAnAccountsTokenThereIsNothing) {
  const auto operators = operatorsToken();
  const std::pair<const char*, const char*> endpoints[] = {{"GET", "/desktop/auth/profile"},
                                                           {"PATCH", "/auth/profile"},
                                                           {"DELETE", "/desktop/auth/account"},
                                                           {"GET", "/dictionary"},
                                                           {"POST", "/dictionary"},
                                                           {"DELETE", "/dictionary/1"}};
  for (const auto& [method, path] : endpoints) {
    EXPECT_EQ(ask(method, path, "").status, 401) << path;
    EXPECT_EQ(ask(method, path, "wrong").status, 401) << path;
    EXPECT_EQ(ask(method, path, std::string(43, 'A')).status, 401) << path;
    const auto answer = ask(method, path, operators);
    EXPECT_EQ(answer.status, 403) << path;
    EXPECT_THAT(answer.body, HasSubstr("This token belongs to no account."));
  }
}

TEST_P(AccountApiTest, DictationTakesTokensOfAccountsAndOfTheOperator) {
  const auto wav = WavFile{}.bytes();
  EXPECT_EQ(ask("POST", "/desktop/dictate", signIn(), wav).status, 200);
  EXPECT_EQ(ask("POST", "/desktop/dictate", operatorsToken(), wav).status, 200);
  EXPECT_EQ(ask("POST", "/desktop/dictate", std::string(43, 'A'), wav).status, 401);
  EXPECT_EQ(ask("POST", "/desktop/dictate", "", wav).status, 401);
}

TEST_P(AccountApiTest, ATokenThatNobodyUsesForHalfAYearEnds) {
  const auto token = signIn();
  advance(180 * 24h);
  EXPECT_EQ(ask("GET", "/desktop/auth/profile", token).status, 200);
  advance(181 * 24h);
  EXPECT_EQ(ask("GET", "/desktop/auth/profile", token).status, 401);
}

TEST_P(AccountApiTest, LanguagesNeedNoTokenAndMindNone) {
  const auto answer = ask("GET", "/languages", "");
  EXPECT_EQ(answer.body, R"({"status":"success","languages":[{"name":"English","code":"en"}]})");
  EXPECT_EQ(ask("GET", "/languages", "wrong").status, 200);
}

TEST_P(AccountApiTest, TheLogHoldsNothingOfWhatAccountsKeep) {
  const auto token = signIn();
  const auto added = objectIn(add(token, R"({"phrase":"private","replacement":"word"})"));
  ask("DELETE", "/dictionary/" + std::string(added.at("entry").at("id").as_string()), token);
  rename(token, R"({"name":"private"})");
  const auto log = stop();
  EXPECT_THAT(log, HasSubstr("DELETE /dictionary/* 200"));
  EXPECT_THAT(log, Not(HasSubstr("private")));
  EXPECT_THAT(log, Not(HasSubstr(std::string(added.at("entry").at("id").as_string()))));
}

TEST(AccountsOffTest, AccountPathsAreUnknownAndLanguagesAreNot) {
  EngineScript script;
  RunningService service(script, {});
  const auto statusOf = [&](const char* line) {
    return RawClient(service.port())
        .exchange(std::string(line) + " HTTP/1.1\r\nHost: x\r\n\r\n")
        .value_or(RawAnswer{})
        .status;
  };
  EXPECT_EQ(statusOf("GET /desktop/auth/profile"), 404);
  EXPECT_EQ(statusOf("POST /desktop/auth/google"), 404);
  EXPECT_EQ(statusOf("POST /telemetry/install"), 404);
  EXPECT_EQ(statusOf("GET /languages"), 200);
}

}  // namespace
}  // namespace vemo::service
