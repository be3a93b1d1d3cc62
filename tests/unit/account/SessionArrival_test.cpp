// A session that the token store tells of only after the start.
#include "AccountFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::IsEmpty;

class SessionArrivalTest : public AccountFixture {
 protected:
  static inline const FakeSecretBackend::Item item{u"brelmox.Vemo"_s, u"authToken"_s};

  SessionArrivalTest() {
    http.answerAlways(profilePath, 200, R"({"status":"ok","user":{"name":"From the profile"}})");
    tokens().expect(tokenAccount);
    startUp();
    observation = auth->changed.observe([this] { ++changes; });
  }

  /// As the token reader does it.
  void keyringAnswers() {
    if (tokens().refresh(tokenAccount, {&secrets})) auth->tokenArrived();
    http.answer(languagesPath, 500);
    settle();
  }

  Observation observation;
  int changes = 0;
};

TEST_F(SessionArrivalTest, TheStartAsksNeitherKeyringNorServer) {
  EXPECT_THAT(secrets.calls, IsEmpty());
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_FALSE(auth->isSignedIn());
}

TEST_F(SessionArrivalTest, ATokenThatArrivesSignsInAndReadsTheAccount) {
  secrets.items[item] = "token";
  keyringAnswers();
  EXPECT_TRUE(auth->isSignedIn());
  EXPECT_EQ(auth->displayName(), u"From the profile"_s);
  EXPECT_EQ(lastRequest().url.path(), languagesPath);
  EXPECT_GE(changes, 1);
}

TEST_F(SessionArrivalTest, AnAbsenceReadsTheLanguagesAlone) {
  keyringAnswers();
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_EQ(requestCount(), 1);
  EXPECT_EQ(lastRequest().url.path(), languagesPath);
}

TEST_F(SessionArrivalTest, AKeyringUnlockedLaterSignsIn) {
  secrets.items[item] = "token";
  secrets.findFailure = SecretError::Failed;
  keyringAnswers();
  EXPECT_FALSE(auth->isSignedIn());
  secrets.findFailure.reset();
  keyringAnswers();
  EXPECT_TRUE(auth->isSignedIn());
}

TEST_F(SessionArrivalTest, ALaterAnswerChangesNothingForWhoIsSignedIn) {
  secrets.items[item] = "token";
  keyringAnswers();
  changes = 0;
  const auto before = requestCount();
  auth->tokenArrived();
  settle();
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(requestCount(), before);
}

TEST_F(SessionArrivalTest, ALegacyTokenWaitsForTheAnswerAndTheSecureOneWins) {
  storage.settings.set(keys::authToken, u"legacy"_s);
  secrets.items[item] = "secure";
  keyringAnswers();
  EXPECT_EQ(heldToken(), u"secure"_s);
  EXPECT_FALSE(storage.settings.contains(keys::authToken));
}

TEST_F(SessionArrivalTest, UntilTheAnswerTheSessionIsUnknown) {
  EXPECT_TRUE(auth->isSessionUnknown());
  keyringAnswers();
  EXPECT_FALSE(auth->isSessionUnknown());
  EXPECT_FALSE(auth->isSignedIn());
}

TEST_F(SessionArrivalTest, WhoSignsOutBeforeTheAnswerStaysSignedOut) {
  secrets.items[item] = "token";
  secrets.onFound = [this] {
    secrets.onFound = nullptr;
    auth->signOut();
  };
  keyringAnswers();
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_FALSE(auth->isSessionUnknown());
  EXPECT_EQ(secrets.items.count(item), 0);
}

}  // namespace
}  // namespace vemo
