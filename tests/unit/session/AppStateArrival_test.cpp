// A start at which the keyring hasn't answered yet.
#include "SessionFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::SizeIs;

class AppStateArrivalTest : public SessionFixture {
 protected:
  AppStateArrivalTest() { isTokenExpected = true; }

  void keyringAnswers() {
    if (tokens->refresh(u"authToken"_s, {&secrets})) auth->tokenArrived();
    mainThread.drain();
  }

  void wasSignedInBefore() { storage.settings.set(keys::authEmail, u"a@b.c"_s); }
};

TEST_F(AppStateArrivalTest, WhoWasSignedInDictatesAtOnceAndTheTokenThatArrivedGoesWithIt) {
  wasSignedInBefore();
  startUp();
  EXPECT_EQ(appState->statusText(), u"Ready"_s);
  startRecording();
  keyringAnswers();
  http.answer(dictatePath, 200, success(u"hi"_s));
  hear(1.0);
  stopRecording();
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_THAT(http.requests().front().headers,
              Contains(std::pair<QByteArray, QByteArray>("Authorization", "Bearer token")));
}

TEST_F(AppStateArrivalTest, WhoWasNeverSignedInIsAskedToSignIn) {
  startUp();
  EXPECT_EQ(appState->statusText(), u"Sign in to connect"_s);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_TRUE(storage.hasLogged(u"recording blocked — user not signed in"_s));
}

TEST_F(AppStateArrivalTest, WhoseKeyringIsLockedIsAskedToSignInUntilItIsUnlocked) {
  wasSignedInBefore();
  secrets.findFailure = SecretError::Failed;
  startUp();
  keyringAnswers();
  EXPECT_EQ(appState->statusText(), u"Sign in to connect"_s);
  secrets.findFailure.reset();
  keyringAnswers();
  EXPECT_EQ(appState->statusText(), u"Ready"_s);
  startRecording();
}

TEST_F(AppStateArrivalTest, TheHistoryShowsWithTheToken) {
  DictationHistory earlier(clock, storage.settings);
  earlier.recordDictation(u"from before"_s);
  startUp();
  EXPECT_FALSE(appState->history().hasTranscripts());
  int changes = 0;
  const auto observation = appState->changed.observe([&] { ++changes; });
  keyringAnswers();
  EXPECT_EQ(appState->history().lastTranscript(), u"from before"_s);
  EXPECT_GE(changes, 1);
}

}  // namespace
}  // namespace vemo
