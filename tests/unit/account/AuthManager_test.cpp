// A session between sign-in and sign-out.
#include "AccountFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AuthManagerTest : public AccountFixture {
 protected:
  void startSignedIn() {
    holdToken();
    startUp();
  }

  void profileAnswers(int status, const QByteArray& body = {}) {
    http.answer(profilePath, status, body);
    run(auth->refreshProfile({}));
  }
};

TEST_F(AuthManagerTest, AtStartASignedInUserHasProfileAndThenLanguagesRead) {
  startSignedIn();
  ASSERT_EQ(requestCount(), 2);
  EXPECT_EQ(http.requests()[0].url.path(), profilePath);
  EXPECT_EQ(http.requests()[1].url.path(), languagesPath);
}

TEST_F(AuthManagerTest, AtStartSignedOutOnlyLanguagesAreReadWithoutAToken) {
  startUp();
  ASSERT_EQ(requestCount(), 1);
  EXPECT_EQ(http.requests()[0].url.path(), languagesPath);
  EXPECT_THAT(http.requests()[0].headers, IsEmpty());
}

TEST_F(AuthManagerTest, WhatTheSettingsHoldIsThereBeforeTheNetwork) {
  storage.settings.set(keys::authEmail, u"a@b.c"_s);
  storage.settings.set(keys::authDisplayName, u"N"_s);
  storage.settings.set(keys::authPhotoURL, u"https://pictures.example/1.png"_s);
  startUp();
  EXPECT_EQ(auth->email(), u"a@b.c"_s);
  EXPECT_EQ(auth->displayName(), u"N"_s);
  EXPECT_EQ(auth->photoURL(), QUrl(u"https://pictures.example/1.png"_s));
}

TEST_F(AuthManagerTest, ALegacyTokenMovesToTheStore) {
  storage.settings.set(keys::authToken, u"legacy"_s);
  http.answer(profilePath, 500);
  startUp();
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_EQ(heldToken(), u"legacy"_s);
  EXPECT_FALSE(storage.settings.contains(keys::authToken));
  EXPECT_TRUE(storage.hasLogged(u"auth: migrated legacy UserDefaults token into the Keychain"_s));
}

TEST_F(AuthManagerTest, WithATokenInBothPlacesTheStoresWinsAndTheLegacyOneIsDropped) {
  storage.settings.set(keys::authToken, u"legacy"_s);
  startSignedIn();
  EXPECT_EQ(heldToken(), u"token"_s);
  EXPECT_FALSE(storage.settings.contains(keys::authToken));
}

TEST_F(AuthManagerTest, ALegacyTokenThatCantBeKeptIsLost) {
  storage.settings.set(keys::authToken, u"legacy"_s);
  secrets.addFailure = SecretError::Failed;
  startUp();
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_FALSE(storage.settings.contains(keys::authToken));
}

TEST_F(AuthManagerTest, TheProfileIsAskedForAsAgreed) {
  startSignedIn();
  const auto& request = http.requests()[0];
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(request.headers, (Headers{{"Authorization", "Bearer token"},
                                      {"x-platform", "macos"},
                                      {"x-app-version", "1.2.0"}}));
}

TEST_F(AuthManagerTest, WithoutAVersionTheHeaderSaysOnePointZero) {
  with.system.applicationVersion.clear();
  startSignedIn();
  EXPECT_EQ(http.requests()[0].headers[2].second, "1.0");
}

TEST_F(AuthManagerTest, AProfileIsTakenAndKept) {
  startSignedIn();
  profileAnswers(299, R"({"status":"ok","user":{"email":"a@b.c","name":"N",)"
                      R"("avatarUrl":"https://pictures.example/2.png",)"
                      R"("consumption":{"totalRequests":3},"updates":{"betaEligible":true}}})");
  EXPECT_EQ(auth->email(), u"a@b.c"_s);
  EXPECT_EQ(storage.settings.get(keys::authDisplayName), u"N"_s);
  EXPECT_EQ(auth->photoURL(), QUrl(u"https://pictures.example/2.png"_s));
  ASSERT_TRUE(auth->consumption());
  EXPECT_EQ(auth->consumption()->totalRequests, 3);
  EXPECT_TRUE(auth->isBetaTester());
}

TEST_F(AuthManagerTest, AProfileWithoutANameKeepsTheOldOneAndWithoutConsumptionClearsIt) {
  startSignedIn();
  profileAnswers(200, R"({"status":"ok","user":{"name":"N","consumption":{"totalRequests":3},)"
                      R"("updates":{"betaEligible":true}}})");
  profileAnswers(200, R"({"status":"ok","user":{}})");
  EXPECT_EQ(auth->displayName(), u"N"_s);
  EXPECT_EQ(auth->consumption(), std::nullopt);
  EXPECT_FALSE(auth->isBetaTester());
}

TEST_F(AuthManagerTest, AnAvatarThatIsNoAddressKeepsTheOldPhoto) {
  storage.settings.set(keys::authPhotoURL, u"https://pictures.example/1.png"_s);
  startSignedIn();
  profileAnswers(200, R"({"status":"ok","user":{"avatarUrl":"http://not an address"}})");
  EXPECT_EQ(auth->photoURL(), QUrl(u"https://pictures.example/1.png"_s));
  EXPECT_EQ(storage.settings.get(keys::authPhotoURL), u"https://pictures.example/1.png"_s);
}

TEST_F(AuthManagerTest, A401FromTheProfileEndsTheSessionWithItsWords) {
  startSignedIn();
  profileAnswers(401);
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_FALSE(heldToken());
  EXPECT_EQ(auth->lastError(), u"Session expired — sign in again"_s);
}

TEST_F(AuthManagerTest, A401ThatComesAfterTheSignOutIsNoExpiry) {
  startSignedIn();
  http.answer(profilePath, 401, {}, 1s);
  run(auth->refreshProfile({}));
  auth->signOut();
  clock.advance(1s);
  EXPECT_EQ(auth->lastError(), std::nullopt);
}

TEST_F(AuthManagerTest, NoOtherFailureEndsTheSession) {
  startSignedIn();
  for (const int status : {199, 300, 400, 403, 404, 500, 503}) profileAnswers(status);
  http.fail(profilePath, UrlError::NotConnectedToInternet, {}, u"no internet"_s);
  run(auth->refreshProfile({}));
  http.answerWithoutStatus(profilePath);
  run(auth->refreshProfile({}));
  profileAnswers(200, "<html>");
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_EQ(auth->lastError(), std::nullopt);
  EXPECT_TRUE(storage.hasLogged(u"auth: refreshProfile non-fatal error — no internet"_s));
  EXPECT_TRUE(storage.hasLogged(
      u"auth: refreshProfile non-fatal error — the answer isn't what was expected"_s));
}

TEST_F(AuthManagerTest, LanguagesAreKeptThroughEveryFailure) {
  startSignedIn();
  http.answer(languagesPath, 200, R"({"status":"ok","languages":[{"name":"A","code":"a"}]})");
  run(auth->fetchLanguages({}));
  EXPECT_EQ(lastRequest().headers, (Headers{{"Authorization", "Bearer token"}}));
  http.answer(languagesPath, 401);
  http.answer(languagesPath, 200, "[]");
  http.fail(languagesPath, UrlError::TimedOut, {}, u"too slow"_s);
  for (int attempt = 0; attempt < 3; ++attempt) run(auth->fetchLanguages({}));
  EXPECT_THAT(auth->fetchedLanguages(), ElementsAre(LanguageDto{u"A"_s, u"a"_s}));
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_TRUE(storage.hasLogged(u"auth: fetchLanguages error — too slow"_s));
  EXPECT_TRUE(
      storage.hasLogged(u"auth: fetchLanguages error — the answer isn't what was expected"_s));
}

TEST_F(AuthManagerTest, AChangedNameIsSentAndKept) {
  startSignedIn();
  http.answer(namePath, 204);
  EXPECT_TRUE(run(auth->updateProfile(u"New \"name\""_s, {})));
  EXPECT_EQ(lastRequest().method, "PATCH");
  EXPECT_EQ(lastRequest().body, R"({"name":"New \"name\""})");
  EXPECT_EQ(lastRequest().headers, (Headers{{"Authorization", "Bearer token"},
                                            {"x-platform", "mac"},
                                            {"x-app-version", "1.2.0"},
                                            {"Content-Type", "application/json"}}));
  EXPECT_EQ(auth->displayName(), u"New \"name\""_s);
  EXPECT_EQ(storage.settings.get(keys::authDisplayName), u"New \"name\""_s);
}

TEST_F(AuthManagerTest, ANameThatTheServiceRefusesChangesNothing) {
  startSignedIn();
  http.answer(namePath, 400);
  EXPECT_FALSE(run(auth->updateProfile(u"New"_s, {})));
  http.fail(namePath, UrlError::TimedOut, {}, u"too slow"_s);
  EXPECT_FALSE(run(auth->updateProfile(u"New"_s, {})));
  EXPECT_EQ(auth->displayName(), std::nullopt);
  EXPECT_TRUE(storage.hasLogged(u"auth: updateProfile error — too slow"_s));
}

TEST_F(AuthManagerTest, DeletingTheAccountChangesNothingHere) {
  startSignedIn();
  http.answer(accountPath, 200);
  EXPECT_EQ(run(auth->deleteAccount({})), std::nullopt);
  EXPECT_EQ(lastRequest().method, "DELETE");
  EXPECT_EQ(lastRequest().timeout, 30s);
  EXPECT_EQ(lastRequest().headers[1].second, "macos");
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_TRUE(storage.hasLogged(u"auth: account deleted"_s));
}

TEST_F(AuthManagerTest, DeletingTheAccountWithTheNetworkDownLeavesTheSessionIntact) {
  startSignedIn();
  http.fail(accountPath, UrlError::NotConnectedToInternet, {}, u"no internet"_s);
  EXPECT_EQ(run(auth->deleteAccount({})),
            u"Couldn't reach Vemo. Check your connection and try again."_s);
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_TRUE(storage.hasLogged(u"auth: deleteAccount error — no internet"_s));
}

TEST_F(AuthManagerTest, ADeletionThatFailsIsToldInTheServicesWordsOrOurs) {
  startSignedIn();
  http.answerWithoutStatus(accountPath);
  EXPECT_EQ(run(auth->deleteAccount({})), u"Something went wrong. Please try again."_s);
  http.answer(accountPath, 409, R"({"error":"Pay first"})");
  EXPECT_EQ(run(auth->deleteAccount({})), u"Pay first"_s);
  http.answer(accountPath, 500, "<html>");
  EXPECT_EQ(run(auth->deleteAccount({})),
            u"We couldn't delete your account. Please try again or email us."_s);
  EXPECT_TRUE(storage.hasLogged(u"auth: deleteAccount HTTP 409"_s));
}

TEST_F(AuthManagerTest, WithoutATokenNothingIsAskedOfTheService) {
  startUp();
  run(auth->refreshProfile({}));
  EXPECT_FALSE(run(auth->updateProfile(u"N"_s, {})));
  EXPECT_EQ(run(auth->deleteAccount({})), u"You're not signed in."_s);
  EXPECT_THAT(run(auth->fetchDictionary({})), IsEmpty());
  EXPECT_EQ(run(auth->addDictionaryItem(u"p"_s, u"r"_s, {})), std::nullopt);
  EXPECT_FALSE(run(auth->deleteDictionaryItem(u"1"_s, {})));
  EXPECT_EQ(requestCount(), 1) << "the languages at start";
}

TEST_F(AuthManagerTest, SigningOutForgetsTheAccountAndKeepsLanguagesAndBeta) {
  startSignedIn();
  profileAnswers(200, R"({"status":"ok","user":{"email":"a@b.c","name":"N",)"
                      R"("avatarUrl":"https://pictures.example/1.png",)"
                      R"("consumption":{},"updates":{"betaEligible":true}}})");
  http.answer(languagesPath, 200, R"({"status":"ok","languages":[{"name":"A","code":"a"}]})");
  run(auth->fetchLanguages({}));
  storage.settings.set(keys::recentDictations, "[]"_ba);
  storage.settings.set(keys::customDictionaryEntries, "[]"_ba);
  storage.settings.set(keys::customShortcutEntries, "[]"_ba);
  auth->setLastError(u"old"_s);

  auth->signOut();
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_FALSE(heldToken());
  EXPECT_EQ(auth->email(), std::nullopt);
  EXPECT_EQ(auth->displayName(), std::nullopt);
  EXPECT_EQ(auth->photoURL(), std::nullopt);
  EXPECT_EQ(auth->consumption(), std::nullopt);
  EXPECT_EQ(auth->lastError(), std::nullopt);
  for (const auto& key : {keys::authEmail, keys::authDisplayName, keys::authPhotoURL})
    EXPECT_FALSE(storage.settings.contains(key));
  for (const auto& key :
       {keys::recentDictations, keys::customDictionaryEntries, keys::customShortcutEntries})
    EXPECT_FALSE(storage.settings.contains(key));
  EXPECT_TRUE(auth->isBetaTester());
  EXPECT_EQ(auth->fetchedLanguages().size(), 1);
}

TEST_F(AuthManagerTest, EventsOfTheAccountGoOutUnderItsTokenBeforeTheSignOut) {
  startSignedIn();
  with.tokens.write(u"token"_s, tokenAccount);
  with.telemetry.track(TelemetryEvent::transcriptCopied());
  with.http.answer(u"/desktop/events"_s, 200);
  auth->signOut();
  settle();
  ASSERT_EQ(with.http.requests().size(), 1);
  EXPECT_EQ(with.http.requests()[0].headers[0].second, "Bearer token");
  EXPECT_TRUE(with.telemetry.queue().empty());
}

TEST_F(AuthManagerTest, ObserversHearOfEachChange) {
  startSignedIn();
  int changes = 0;
  const auto observation = auth->changed.observe([&] { ++changes; });
  profileAnswers(200, R"({"status":"ok","user":{}})");
  EXPECT_EQ(changes, 1);
  auth->signOut();
  EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace vemo
