// Triggers, gates, the switch, start-up.

#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AppStateTriggersTest : public SessionFixture {};

TEST_F(AppStateTriggersTest, AToggleStartsARecordingWithAllThatBelongsToIt) {
  startUp();
  startRecording();
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showRecording"));
  EXPECT_EQ(haptics.taps, 1);
  EXPECT_THAT(sounds.played, ElementsAre(u"vemo_start"_s));
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_started {"mode":"toggle","shortcut":"fnGlobe"})"));
  EXPECT_THAT(storage.logMessages(),
              Contains(u"handleToggleTrigger: isEnabled=true phase=idle choice=fnGlobe"_s));
}

TEST_F(AppStateTriggersTest, AHeldKeyRecordsUntilItIsReleased) {
  storage.settings.set(keys::pushToTalkHotkeyChoice, u"rightOption"_s);
  startUp();
  appState->handlePushToTalkDown();
  EXPECT_EQ(appState->phase(), Phase::recording());
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_started {"mode":"hold","shortcut":"rightOption"})"));
  http.answer(dictatePath, 200, success(u"hi"_s));
  hear(1.0);
  appState->handlePushToTalkUp();
  EXPECT_EQ(appState->phase(), Phase::transcribing());
  EXPECT_TRUE(
      storage.hasLogged(u"handlePushToTalkUp: phase=recording isPushToTalkRecording=true"_s));
}

TEST_F(AppStateTriggersTest,
       ATrigger200msAfterAStopStartsNothingAndShowsNothingAndAt310msItStarts) {
  startUp();
  startRecording();
  stopRecording();
  ASSERT_EQ(appState->phase(), Phase::idle());
  hud.takeCalls();
  clock.advance(200ms);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(hud.takeCalls(), IsEmpty());
  clock.advance(110ms);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateTriggersTest, TheDebounceIsStrictAtExactly300ms) {
  startUp();
  startRecording();
  stopRecording();
  clock.advance(300ms);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::idle());
  clock.advance(1ns);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateTriggersTest, ABlockedAttemptInsideTheDebounceStillShowsItsMessage) {
  startUp();
  startRecording();
  stopRecording();
  auth->signOut();
  hud.takeCalls();
  appState->handleToggleTrigger();
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showError(Please sign in to dictate)"));
}

TEST_F(AppStateTriggersTest, HoldingTheKeyWhileSignedOutShowsTheMessageAndLeavesTheFlagStanding) {
  secrets.remove(u"brelmox.Vemo"_s, u"authToken"_s);
  startUp();
  appState->handlePushToTalkDown();
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showError(Please sign in to dictate)"));
  EXPECT_EQ(windows.bringForwardCount(), 1);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_TRUE(storage.hasLogged(u"recording blocked — user not signed in"_s));
  appState->handlePushToTalkUp();
  EXPECT_THAT(hud.takeCalls(), IsEmpty());
  EXPECT_TRUE(storage.hasLogged(u"handlePushToTalkUp: phase=idle isPushToTalkRecording=true"_s));
  appState->handlePushToTalkUp();
  EXPECT_EQ(
      storage.logMessages().count(u"handlePushToTalkUp: phase=idle isPushToTalkRecording=true"_s),
      2);
}

TEST_F(AppStateTriggersTest, AReleaseDuringARecordingBegunByTheToggleDoesNothing) {
  startUp();
  startRecording();
  appState->handlePushToTalkUp();
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateTriggersTest, TheToggleDuringAHoldStopsTheRecording) {
  startUp();
  appState->handlePushToTalkDown();
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::idle()) << "no sound came in, so the stop is silent";
  EXPECT_FALSE(recorder.isRecording());
}

TEST_F(AppStateTriggersTest, ATriggerWhileTranscribingInjectingOrInErrorDoesNothing) {
  startUp();
  http.answer(dictatePath, 200, success(u"hi"_s), 2s);
  startRecording();
  hear(1.0);
  stopRecording();
  ASSERT_EQ(appState->phase(), Phase::transcribing());
  clock.advance(1s);
  appState->handleToggleTrigger();
  appState->handlePushToTalkDown();
  EXPECT_EQ(appState->phase(), Phase::transcribing());
  clock.advance(1s);
  ASSERT_EQ(appState->phase(), Phase::injecting());
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::injecting());
  finishPaste();
  audioInput.startError = u"broken"_s;
  appState->handleToggleTrigger();
  ASSERT_EQ(appState->phase(), Phase::error(u"broken"_s));
  audioInput.startError.reset();
  clock.advance(1s);
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::error(u"broken"_s));
}

TEST_F(AppStateTriggersTest, ADisabledProgramIgnoresBothKeysAndTheButtonCanStillStop) {
  startUp();
  appState->setEnabled(false);
  appState->handleToggleTrigger();
  appState->handlePushToTalkDown();
  appState->toggleFromButton();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_EQ(audioInput.startCount, 0);
}

TEST_F(AppStateTriggersTest, TheButtonIsTheToggleWithoutItsLogLine) {
  startUp();
  appState->toggleFromButton();
  EXPECT_EQ(appState->phase(), Phase::recording());
  appState->toggleFromButton();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(storage.logMessages().join(u'\n').toStdString(),
              testing::Not(HasSubstr("handleToggleTrigger")));
}

TEST_F(AppStateTriggersTest, AMissingMicrophoneIsPromptedForOnceIn30sAndToldEachTime) {
  startUp();
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  permissions->refresh();
  appState->handleToggleTrigger();
  EXPECT_EQ(system.microphoneRequests.size(), 1u);
  EXPECT_THAT(system.openedPanes,
              ElementsAre(QUrl(u"x-apple.systempreferences:com.apple.preference.security?"
                               "Privacy_Microphone"_s)));
  clock.advance(30s);
  appState->handleToggleTrigger();
  EXPECT_EQ(system.microphoneRequests.size(), 1u) << "not more than 30 s have passed";
  clock.advance(1ns);
  appState->handleToggleTrigger();
  EXPECT_EQ(system.microphoneRequests.size(), 2u);
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showError(Microphone access needed)",
                                           "showError(Microphone access needed)",
                                           "showError(Microphone access needed)"));
  EXPECT_TRUE(storage.hasLogged(u"recording blocked — missing permissions"_s));
}

TEST_F(AppStateTriggersTest, WithoutMicrophoneAndTrustTheMicrophoneAloneIsAskedFor) {
  startUp();
  system.microphoneAuthorization = MicrophoneAuthorization::NotDetermined;
  system.isTrusted = false;
  permissions->refresh();
  appState->handleToggleTrigger();
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showError(Microphone access needed)"));
  EXPECT_EQ(system.microphoneRequests.size(), 1u);
  EXPECT_EQ(system.accessibilityPrompts, 0);
  EXPECT_EQ(system.openedPanes.size(), 1u);
}

TEST_F(AppStateTriggersTest, MissingTrustOpensItsPromptAndPane) {
  startUp();
  system.isTrusted = false;
  permissions->refresh();
  appState->handleToggleTrigger();
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showError(Accessibility access needed)"));
  EXPECT_EQ(system.accessibilityPrompts, 1);
  EXPECT_THAT(system.openedPanes,
              ElementsAre(QUrl(u"x-apple.systempreferences:com.apple.preference.security?"
                               "Privacy_Accessibility"_s)));
  EXPECT_THAT(system.microphoneRequests, IsEmpty());
}

TEST_F(AppStateTriggersTest, ARecorderThatCannotStartShowsItsWordsFor2s) {
  startUp();
  audioInput.formats = {};
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::error(u"No microphone available"_s));
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showError(No microphone available)"));
  EXPECT_THAT(takeEvents(), ElementsAre(R"(dictation_failed {"reason":"recorder_start"})"));
  EXPECT_TRUE(storage.hasLogged(u"recording failed to start: No microphone available"_s));
  clock.advance(2s - 1ns);
  EXPECT_EQ(appState->phase().kind, Phase::Kind::Error);
  clock.advance(1ns);
  EXPECT_EQ(appState->phase(), Phase::idle());
}

TEST_F(AppStateTriggersTest, OfTwoFailuresInARowTheEarlierTimerDoesNotEndTheLaterErrorEarly) {
  startUp();
  audioInput.startError = u"first"_s;
  appState->handleToggleTrigger();
  clock.advance(1s);
  appState->setEnabled(false);
  appState->setEnabled(true);
  audioInput.startError = u"second"_s;
  appState->handleToggleTrigger();
  ASSERT_EQ(appState->phase(), Phase::error(u"second"_s));
  clock.advance(1500ms);
  EXPECT_EQ(appState->phase(), Phase::error(u"second"_s));
  clock.advance(500ms);
  EXPECT_EQ(appState->phase(), Phase::idle());
}

TEST_F(AppStateTriggersTest, AnErrorFollowedByDisableAndEnableIsIdleAtOnceAndItsTimerDoesNothing) {
  startUp();
  audioInput.startError = u"broken"_s;
  appState->handleToggleTrigger();
  appState->setEnabled(false);
  appState->setEnabled(true);
  EXPECT_EQ(appState->phase(), Phase::idle());
  audioInput.startError.reset();
  appState->handleToggleTrigger();
  ASSERT_EQ(appState->phase(), Phase::recording());
  clock.advance(3s);
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateTriggersTest, TheSwitchIsStoredAndHidesThePillInBothDirections) {
  startUp();
  EXPECT_EQ(storage.settings.get(keys::isEnabled), true) << "written at first start";
  appState->setEnabled(false);
  EXPECT_EQ(storage.settings.get(keys::isEnabled), false);
  EXPECT_THAT(hud.takeCalls(), ElementsAre("hideNow"));
  appState->setEnabled(true);
  EXPECT_EQ(storage.settings.get(keys::isEnabled), true);
  EXPECT_THAT(hud.takeCalls(), ElementsAre("hideNow"));
}

TEST_F(AppStateTriggersTest, DisablingWhileRecordingStopsTheRecorderInSilence) {
  startUp();
  startRecording();
  hear(1.0);
  takeEvents();
  appState->setEnabled(false);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_FALSE(recorder.isRecording());
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(AppStateTriggersTest, TheStatusLineFollowsPhaseThenSwitchMicrophoneTrustAndSignIn) {
  secrets.remove(u"brelmox.Vemo"_s, u"authToken"_s);
  startUp();
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  system.isTrusted = false;
  permissions->refresh();
  appState->setEnabled(false);
  EXPECT_EQ(appState->statusText(), u"Disabled"_s);
  appState->setEnabled(true);
  EXPECT_EQ(appState->statusText(), u"Microphone access needed"_s);
  system.microphoneAuthorization = MicrophoneAuthorization::Granted;
  permissions->refresh();
  EXPECT_EQ(appState->statusText(), u"Accessibility access needed"_s);
  system.isTrusted = true;
  permissions->refresh();
  EXPECT_EQ(appState->statusText(), u"Sign in to connect"_s);
}

TEST_F(AppStateTriggersTest, TheStatusLineOfADictationUnderWay) {
  startUp();
  EXPECT_EQ(appState->statusText(), u"Ready"_s);
  http.answer(dictatePath, 200, success(u"hi"_s), 1s);
  startRecording();
  EXPECT_EQ(appState->statusText(), u"Recording…"_s);
  hear(1.0);
  stopRecording();
  EXPECT_EQ(appState->statusText(), u"Transcribing…"_s);
  clock.advance(1s);
  EXPECT_EQ(appState->statusText(), u"Inserting…"_s);
  finishPaste();
  audioInput.startError = u"broken"_s;
  appState->handleToggleTrigger();
  EXPECT_EQ(appState->statusText(), u"broken"_s);
}

TEST_F(AppStateTriggersTest, StartUpAsksForAnUndeterminedMicrophoneAndForMissingTrust) {
  system.microphoneAuthorization = MicrophoneAuthorization::NotDetermined;
  system.isTrusted = false;
  startUp();
  EXPECT_EQ(system.microphoneRequests.size(), 1u);
  EXPECT_EQ(system.accessibilityPrompts, 1);
  EXPECT_TRUE(storage.hasLogged(u"launch: Accessibility not granted — prompting"_s));
  EXPECT_TRUE(storage.hasLogged(
      u"installHotkeyIfNeeded: axTrusted=false micGranted=false tapActive=false"_s));
}

TEST_F(AppStateTriggersTest, WakingAndRegainedTrustInstallTheTapAgainAndLostTrustRemovesIt) {
  startUp();
  const auto attempts = [&] {
    return storage.logMessages().filter(u"installHotkeyIfNeeded"_s).size();
  };
  EXPECT_EQ(attempts(), 1);
  systemEvents.wake();
  EXPECT_EQ(attempts(), 2);
  system.isTrusted = false;
  clock.advance(2s);
  EXPECT_TRUE(storage.hasLogged(u"Accessibility trust lost — tearing down the event tap"_s));
  EXPECT_FALSE(hotkey.isTapEnabled());
  system.isTrusted = true;
  clock.advance(2s);
  EXPECT_EQ(attempts(), 3);
  EXPECT_TRUE(hotkey.isTapEnabled());
}

TEST_F(AppStateTriggersTest, HotkeysAreWiredToTheTriggers) {
  startUp();
  hotkey.onPushToTalkDown();
  EXPECT_EQ(appState->phase(), Phase::recording());
  hotkey.onPushToTalkUp();
  EXPECT_EQ(appState->phase(), Phase::idle());
  clock.advance(1s);
  hotkey.onToggleTrigger();
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateTriggersTest, LevelsOfTheMicrophoneReachThePill) {
  startUp();
  startRecording();
  hear(0.5);
  EXPECT_THAT(hud.levels, Contains(1.0F));
}

TEST_F(AppStateTriggersTest, ObserversHearOfPhasesAndOfTheirNeighboursChanges) {
  startUp();
  int changes = 0;
  const auto observation = appState->changed.observe([&] { ++changes; });
  startRecording();
  EXPECT_EQ(std::exchange(changes, 0), 1);
  auth->setLastError(u"x"_s);
  EXPECT_EQ(std::exchange(changes, 0), 1);
  system.isTrusted = false;
  permissions->refresh();
  EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace vemo
