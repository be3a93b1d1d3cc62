// A start at which the keyring hasn't answered yet.
#include "SessionFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

class AppStateArrivalTest : public SessionFixture {
 protected:
  AppStateArrivalTest() { isTokenExpected = true; }

  void keyringAnswers() {
    if (tokens->refresh(u"authToken"_s, {&secrets})) auth->tokenArrived();
    mainThread.drain();
  }
};

TEST_F(AppStateArrivalTest, ADictationMayBeginAtOnceAndTheTokenThatArrivedGoesWithIt) {
  startUp();
  EXPECT_EQ(appState->statusText(), u"Ready"_s);
  startRecording();
  keyringAnswers();
  EXPECT_EQ(appState->phase(), Phase::recording());
  http.answer(dictatePath, 200, success(u"hi"_s));
  hear(1.0);
  stopRecording();
  ASSERT_THAT(http.requests(), SizeIs(1));
  EXPECT_THAT(http.requests().front().headers,
              Contains(std::pair<QByteArray, QByteArray>("Authorization", "Bearer token")));
}

TEST_F(AppStateArrivalTest, ARecordingOfNobodyEndsWithTheAnswerAndAsksToSignIn) {
  secrets.remove(u"brelmox.Vemo"_s, u"authToken"_s);
  startUp();
  startRecording();
  hud.takeCalls();
  keyringAnswers();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_FALSE(recorder.isRecording());
  EXPECT_EQ(appState->statusText(), u"Sign in to connect"_s);
  EXPECT_TRUE(storage.hasLogged(u"recording blocked — user not signed in"_s));
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(AppStateArrivalTest, ASignOutInALaterRecordingLetsItGoOn) {
  startUp();
  keyringAnswers();
  startRecording();
  auth->signOut();
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateArrivalTest, WhoseKeyringIsLockedIsAskedToSignInUntilItIsUnlocked) {
  secrets.findFailure = SecretError::Failed;
  startUp();
  keyringAnswers();
  EXPECT_EQ(appState->statusText(), u"Sign in to connect"_s);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::idle());
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
