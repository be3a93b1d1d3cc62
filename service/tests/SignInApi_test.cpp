#include "accounts/SignInApi.h"

#include "support/AccountServiceTest.h"

namespace vemo::service {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

class SignInApiTest : public AccountServiceTest {};
INSTANTIATE_TEST_SUITE_P(Each, SignInApiTest, everyDeployment, deploymentName);

TEST_P(SignInApiTest, AnIdTokenBecomesABearerTokenOfTheSamePersonsAccount) {
  const auto answer = objectIn(askToSignIn(idToken()));
  const auto& user = answer.at("user").as_object();
  EXPECT_EQ(user.at("email").as_string(), "ada@example.org");
  EXPECT_EQ(user.at("name").as_string(), "Ada");
  EXPECT_EQ(user.at("avatarUrl").as_string(), "https://pictures/ada");
  const std::string token(answer.at("token").as_string());
  EXPECT_EQ(token.size(), 43U);
  EXPECT_EQ(profile(token).at("id"), user.at("id"));
  EXPECT_EQ(profile(signIn()).at("id"), user.at("id"));
  EXPECT_NE(profile(signIn("bob")).at("id"), user.at("id"));
}

TEST_P(SignInApiTest, WhatAProviderLeavesOutIsLeftOut) {
  const auto claims =
      Claims(now()).with("email", nullptr).with("name", nullptr).with("picture", nullptr);
  const auto answer = objectIn(askToSignIn(providerKey().sign(claims.text())));
  EXPECT_EQ(answer.at("user").as_object().size(), 1U);
}

TEST_P(SignInApiTest, ABodyThatCannotBeUnderstoodIsABadRequest) {
  m_settings.accounts.signInsAMinute = 1;
  for (const auto* body :
       {"", "{", "[]", "null", "{}", R"({"idToken":7})", R"({"idToken":""})", R"({"idToken":null})",
        R"({"idToken":"a\u0000b"})", R"({"idToken":"a","nonce":7})",
        R"({"idToken":"a","nonce":""})", "{\"idToken\":\"\xFF\"}"})
    EXPECT_EQ(ask("POST", "/desktop/auth/google", "", body).status, 400) << body;
  EXPECT_EQ(ask("POST", "/desktop/auth/google", "", std::string(30'000, '[')).status, 400);
  // None of those has used up the one sign-in of the minute.
  signIn();
}

TEST_P(SignInApiTest, ABodyAboveTheLimitIsTooLong) {
  const std::string most(32 * 1024, ' ');
  EXPECT_EQ(ask("POST", "/desktop/auth/google", "", most).status, 400);
  EXPECT_EQ(ask("POST", "/desktop/auth/google", "", most + ' ').status, 413);
}

TEST_P(SignInApiTest, AForgedOrForeignIdTokenIsRefusedAndTheLogTellsWhyAlone) {
  const auto claims = Claims(now());
  const auto forged = strangersKey().sign(claims.text());
  for (const auto& token :
       {forged, std::string("a.b.c"), providerKey().sign(claims.with("aud", "other").text()),
        providerKey().sign(claims.with("iss", "https://other").text()),
        providerKey().sign(claims.with("nonce", "unasked").text()),
        unsignedToken(R"({"alg":"none"})", claims.text()),
        symmetricToken(claims.text(), providerKey().publicJson())}) {
    const auto answer = askToSignIn(token);
    EXPECT_EQ(answer.status, 401);
    EXPECT_THAT(answer.body, HasSubstr(R"("error":"The sign-in was not accepted.)"));
  }
  const auto log = stop();
  EXPECT_THAT(log, AllOf(HasSubstr("a sign-in was refused: "), Not(HasSubstr(forged)),
                         Not(HasSubstr("ada"))));
}

TEST_P(SignInApiTest, AnIdTokenThatHasRunOutIsRefused) {
  const auto token = idToken();
  advance(3600s + 60s);
  EXPECT_EQ(askToSignIn(token).status, 401);
}

TEST_P(SignInApiTest, AnIdTokenIsGoodForOneSignIn) {
  const auto token = idToken();
  EXPECT_EQ(askToSignIn(token).status, 200);
  EXPECT_EQ(askToSignIn(token).status, 401);
}

TEST_P(SignInApiTest, ANonceThatWasAskedForMustBeThere) {
  const auto token = providerKey().sign(Claims(now()).with("nonce", "n1").text());
  const auto body = [&](const char* nonce) {
    return boost::json::serialize(boost::json::object{{"idToken", token}, {"nonce", nonce}});
  };
  EXPECT_EQ(ask("POST", "/desktop/auth/google", "", body("n2")).status, 401);
  EXPECT_EQ(ask("POST", "/desktop/auth/google", "", body("n1")).status, 200);
}

TEST_P(SignInApiTest, AProviderWhoseKeysCannotBeHadIsToldApartFromABadToken) {
  m_keys.reset();
  const auto answer = askToSignIn(idToken());
  EXPECT_EQ(answer.status, 503);
  EXPECT_THAT(answer.head, HasSubstr("Retry-After: "));
}

TEST_P(SignInApiTest, TheTenthSignInOfAMinuteIsTakenAndTheEleventhIsNot) {
  for (int attempt = 1; attempt <= 10; ++attempt) signIn();
  const auto answer = askToSignIn(idToken());
  EXPECT_EQ(answer.status, 429);
  EXPECT_THAT(answer.head, HasSubstr("Retry-After: 60\r\n"));
  advance(60s);
  signIn();
}

TEST_P(SignInApiTest, RefusedSignInsCountToo) {
  m_settings.accounts.signInsAMinute = 2;
  EXPECT_EQ(askToSignIn("a.b.c").status, 401);
  EXPECT_EQ(askToSignIn("a.b.c").status, 401);
  EXPECT_EQ(askToSignIn(idToken()).status, 429);
}

class SignInSourceTest : public AccountServiceTest {};
INSTANTIATE_TEST_SUITE_P(Alone, SignInSourceTest,
                         testing::Values(Deployment::Sqlite, Deployment::PostgreSql),
                         deploymentName);

TEST_P(SignInSourceTest, BehindAProxyTheLastAddressOfItsHeaderCounts) {
  m_settings.accounts.signInsAMinute = 1;
  m_settings.behindProxy = true;
  const auto from = [&](const char* addresses) {
    return askToSignIn(idToken(), "X-Forwarded-For: " + std::string(addresses) + "\r\n").status;
  };
  EXPECT_EQ(from("198.51.100.1"), 200);
  EXPECT_EQ(from("198.51.100.2"), 200);
  EXPECT_EQ(from("203.0.113.7, 198.51.100.2"), 429);
  EXPECT_EQ(from("2001:db8::1"), 200);
  EXPECT_EQ(from("2001:db8::2"), 429);
  EXPECT_EQ(from("2001:db8:0:1::2"), 200);
}

TEST_P(SignInSourceTest, WithoutAProxyTheHeaderIsNobodysWord) {
  m_settings.accounts.signInsAMinute = 1;
  EXPECT_EQ(askToSignIn(idToken(), "X-Forwarded-For: 198.51.100.1\r\n").status, 200);
  EXPECT_EQ(askToSignIn(idToken(), "X-Forwarded-For: 198.51.100.2\r\n").status, 429);
}

TEST_P(SignInApiTest, NeitherLogNorDatabaseHoldsATokenInClear) {
  const auto compact = idToken();
  const std::string token(objectIn(askToSignIn(compact)).at("token").as_string());
  profile(token);
  EXPECT_THAT(stop(), AllOf(HasSubstr("POST /desktop/auth/google 200"), Not(HasSubstr(token)),
                            Not(HasSubstr(compact)), Not(HasSubstr("ada"))));
  Database database(m_settings.accounts.database);
  for (const auto* question : {"SELECT count(*) FROM tokens WHERE hash = :text",
                               "SELECT count(*) FROM used_id_tokens WHERE hash = :text"}) {
    long long count = 0;
    const auto& secret = question[21] == 't' ? token : compact;
    database.session() << question, soci::use(secret), soci::into(count);
    EXPECT_EQ(count, 0);
  }
}

}  // namespace
}  // namespace vemo::service
