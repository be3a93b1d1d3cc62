// Signing in, from the page to the first profile.
#include <QUrlQuery>

#include "AccountFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class AuthManagerSignInTest : public AccountFixture {
 protected:
  AuthManagerSignInTest() { startUp(); }

  void begin() {
    signIn = scope.start([this](std::stop_token stop) { return auth->signInWithGoogle(stop); });
    settle();
  }

  /// Google has signed the user in; the service answers as scripted.
  void passGoogle() {
    begin();
    http.answer(tokenPath, 200, R"({"id_token":"the id token"})");
    const QString state = QUrlQuery(browser.pages().back().url).queryItemValue(u"state"_s);
    browser.redirectTo(QUrl(u"x:/oauth2redirect?code=c0de&state="_s + state));
    settle();
  }

  void signInAnswered(int status, const QByteArray& body) {
    http.answer(signInPath, status, body);
    passGoogle();
  }

  void expectSignedOut(const QString& message) {
    EXPECT_FALSE(auth->isSignedIn());
    EXPECT_FALSE(auth->isWorking());
    EXPECT_EQ(auth->lastError(), message);
    EXPECT_FALSE(heldToken());
  }

  StartedTask signIn;
};

TEST_F(AuthManagerSignInTest, ASuccessIsKeptToldAndFollowedByProfileAndLanguages) {
  http.answer(profilePath, 200, R"({"status":"ok","user":{"name":"From the profile"}})");
  http.answer(languagesPath, 200,
              R"({"status":"ok","languages":[{"name":"English","code":"en"}]})");
  signInAnswered(200, R"({"token":"session","user":{"email":"a@b.c","name":"N",)"
                      R"("avatarUrl":"https://pictures.example/1.png"}})");
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_FALSE(auth->isWorking());
  EXPECT_EQ(auth->lastError(), std::nullopt);
  EXPECT_EQ(heldToken(), u"session"_s);
  EXPECT_EQ(auth->email(), u"a@b.c"_s);
  EXPECT_EQ(auth->displayName(), u"From the profile"_s);
  EXPECT_EQ(auth->photoURL(), QUrl(u"https://pictures.example/1.png"_s));
  EXPECT_EQ(storage.settings.get(keys::authEmail), u"a@b.c"_s);
  EXPECT_EQ(storage.settings.get(keys::authPhotoURL), u"https://pictures.example/1.png"_s);
  EXPECT_THAT(auth->fetchedLanguages(), ElementsAre(LanguageDto{u"English"_s, u"en"_s}));
  EXPECT_TRUE(storage.hasLogged(u"auth: signed in successfully"_s));
  EXPECT_THAT(events(), ElementsAre("sign_in_started {}", "sign_in_completed {}"));
}

TEST_F(AuthManagerSignInTest, TheIdTokenGoesToTheServiceWithItsHeaders) {
  http.answer(profilePath, 500);
  http.answer(languagesPath, 500);
  signInAnswered(200, R"({"token":"session","user":{}})");
  const auto request = http.requests().at(http.requests().size() - 3);
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.url, configuration.api(u"desktop/auth/google"_s));
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(request.body, R"({"idToken":"the id token"})");
  EXPECT_EQ(request.headers, (Headers{{"x-platform", "macos"},
                                      {"x-app-version", "1.2.0 (34)"},
                                      {"x-device-id", "INSTALLATION"},
                                      {"x-os-version", "Debian GNU/Linux 12 (bookworm)"},
                                      {"Content-Type", "application/json"}}));
}

TEST_F(AuthManagerSignInTest, ASignInReplyWithoutANameClearsTheOldOne) {
  storage.settings.set(keys::authDisplayName, u"Old"_s);
  http.answer(languagesPath, 500);
  auth = nullptr;
  startUp();
  EXPECT_EQ(auth->displayName(), u"Old"_s);
  http.answer(profilePath, 500);
  signInAnswered(200, R"({"token":"session","user":{"email":"a@b.c"}})");
  EXPECT_EQ(auth->displayName(), std::nullopt);
}

TEST_F(AuthManagerSignInTest, WhileItRunsItIsWorkingAndTheLastErrorIsGone) {
  auth->setLastError(u"old"_s);
  begin();
  EXPECT_TRUE(auth->isWorking());
  EXPECT_EQ(auth->lastError(), std::nullopt);
}

TEST_F(AuthManagerSignInTest, CancellingIsNoError) {
  begin();
  signIn.cancel();
  settle();
  EXPECT_FALSE(auth->isWorking());
  EXPECT_EQ(auth->lastError(), std::nullopt);
  EXPECT_THAT(events(),
              ElementsAre("sign_in_started {}", R"(sign_in_failed {"reason":"cancelled"})"));
}

TEST_F(AuthManagerSignInTest, AFailureOfTheFlowIsShownLoggedAndTold) {
  begin();
  browser.redirectTo(QUrl(u"x:/oauth2redirect?code=c&state=wrong"_s));
  settle();
  expectSignedOut(u"Sign-in failed a security check"_s);
  EXPECT_TRUE(storage.hasLogged(u"auth: google flow FAILED — Sign-in failed a security check"_s));
  EXPECT_THAT(events(), Contains(R"(sign_in_failed {"reason":"google"})"));
}

TEST_F(AuthManagerSignInTest, ANetworkFailureIsToldWithItsRequest) {
  http.fail(signInPath, UrlError::TimedOut, {}, u"too slow"_s);
  passGoogle();
  expectSignedOut(u"Can't reach the server"_s);
  EXPECT_TRUE(storage.hasLogged(u"auth: sign-in FAILED — too slow"_s));
  EXPECT_THAT(
      events(),
      ElementsAre("sign_in_started {}", R"(sign_in_failed {"reason":"network"})",
                  R"(request_failed {"endpoint":"auth/google","error":"url_-1001","ms":0})"));
}

TEST_F(AuthManagerSignInTest, A200WithAnUnreadableBodyCountsAsANetworkFailure) {
  signInAnswered(200, "<html>");
  expectSignedOut(u"Can't reach the server"_s);
  EXPECT_THAT(events(),
              ElementsAre("sign_in_started {}", R"(sign_in_failed {"reason":"network"})",
                          R"(request_failed {"endpoint":"auth/google","error":"error","ms":0})"));
}

TEST_F(AuthManagerSignInTest, AnAnswerThatIsNoHttpIsUnexpectedAndNotTold) {
  http.answerWithoutStatus(signInPath);
  passGoogle();
  expectSignedOut(u"Unexpected server response"_s);
  EXPECT_THAT(events(), ElementsAre("sign_in_started {}"));
}

TEST_F(AuthManagerSignInTest, AStatusOf201IsAFailureToldByItsStatus) {
  signInAnswered(201, R"({"token":"session","user":{}})");
  expectSignedOut(u"Sign-in failed (HTTP 201)"_s);
  EXPECT_TRUE(storage.hasLogged(u"auth: sign-in FAILED — HTTP 201: Sign-in failed (HTTP 201)"_s));
  EXPECT_THAT(events(),
              ElementsAre("sign_in_started {}", R"(sign_in_failed {"reason":"http_201"})"));
}

TEST_F(AuthManagerSignInTest, A401WithWordsShowsThem) {
  signInAnswered(401, R"({"error":"Not for you"})");
  expectSignedOut(u"Not for you"_s);
}

TEST_F(AuthManagerSignInTest, A401WithoutWordsHasItsOwn) {
  signInAnswered(401, "");
  expectSignedOut(u"Backend rejected the Google token (client ID not allowed)"_s);
}

TEST_F(AuthManagerSignInTest, AStatusFrom400OnIsAlsoAFailedRequest) {
  signInAnswered(503, "");
  EXPECT_THAT(events(),
              Contains(R"(request_failed {"endpoint":"auth/google","ms":0,"status":503})"));
}

TEST_F(AuthManagerSignInTest, ATokenThatCantBeKeptLeavesTheUserSignedOut) {
  secrets.addFailure = SecretError::Failed;
  signInAnswered(200, R"({"token":"session","user":{"email":"a@b.c"}})");
  expectSignedOut(u"Couldn't save the sign-in token to the Keychain"_s);
  EXPECT_EQ(auth->email(), std::nullopt);
  EXPECT_TRUE(storage.hasLogged(u"auth: keychain write FAILED"_s));
}

TEST_F(AuthManagerSignInTest, NoSecretOfTheFlowIsLogged) {
  http.answer(profilePath, 500);
  http.answer(languagesPath, 500);
  signInAnswered(200, R"({"token":"session-secret","user":{}})");
  const QString log = storage.logMessages().join(u'\n');
  for (const auto& secret : {u"session-secret"_s, u"the id token"_s, u"c0de"_s})
    EXPECT_FALSE(log.contains(secret)) << secret.toStdString();
}

}  // namespace
}  // namespace vemo
