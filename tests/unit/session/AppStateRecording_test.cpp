// The stop's decisions, and the chunks of a long recording.

#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AppStateRecordingTest : public SessionFixture {};

TEST_F(AppStateRecordingTest, AStopWithoutAnyAudioEndsInSilence) {
  startUp();
  startRecording();
  takeEvents();
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showRecording", "hide"));
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(AppStateRecordingTest, ARecordingOf290msEndsInSilenceAndReportsTooShort) {
  startUp();
  startRecording();
  takeEvents();
  hear(0.29);
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showRecording", "hide"));
  EXPECT_THAT(
      takeEvents(),
      ElementsAre(R"(dictation_cancelled {"chunked":false,"reason":"too_short","seconds":0.29})"));
  EXPECT_TRUE(storage.hasLogged(u"recording stopped — isChunked: false (~0.29s)"_s));
}

TEST_F(AppStateRecordingTest, ARecordingOfExactly300msGoesOnToThePeakTest) {
  startUp();
  startRecording();
  takeEvents();
  hear(0.3, 0);
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::error(u"No audio detected — check your microphone"_s));
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_failed {"chunked":false,"reason":"no_audio"})"));
}

TEST_F(AppStateRecordingTest, APeakBelowTheThresholdIsSilenceAndOneAboveIsNot) {
  startUp();
  http.answer(dictatePath, 200, success(u"hi"_s));
  // The threshold of 0.02 lies at -52.74 dBFS, an amplitude of 75.6.
  startRecording();
  hear(0.5, 75);
  stopRecording();
  EXPECT_EQ(appState->phase().kind, Phase::Kind::Error);
  clock.advance(2s);
  startRecording();
  hear(0.5, 76);
  stopRecording();
  EXPECT_EQ(requestCount(dictatePath), 1);
}

TEST_F(AppStateRecordingTest, AStopWhileDisabledIsReportedAsDisabled) {
  startUp();
  startRecording();
  hear(1.0);
  takeEvents();
  // A disable normally has ended the recording; this is the safety net behind it.
  storage.settings.set(keys::isEnabled, false);
  const auto observation = appState->changed.observe([&, done = false]() mutable {
    if (!std::exchange(done, true)) appState->toggleFromButton();
  });
  appState->setEnabled(false);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(takeEvents(), ElementsAre(R"(dictation_cancelled {"reason":"disabled"})"));
}

TEST_F(AppStateRecordingTest, TheCapStopsARecordingAfterTwoHoursAndNotBefore) {
  startUp();
  appState->handlePushToTalkDown();
  http.answer(dictatePath, 200, success(u"hi"_s));
  hear(1.0);
  clock.advance(7199s - 1ns);
  EXPECT_EQ(appState->phase(), Phase::recording());
  clock.advance(1ns);
  EXPECT_NE(appState->phase(), Phase::recording());
  EXPECT_TRUE(storage.hasLogged(u"recording cap reached — auto-stopping"_s));
  finishPaste();
  appState->handlePushToTalkUp();
  EXPECT_TRUE(storage.hasLogged(u"handlePushToTalkUp: phase=idle isPushToTalkRecording=true"_s));
}

TEST_F(AppStateRecordingTest, AStopDisarmsTheCapForTheNextRecording) {
  startUp();
  startRecording();
  clock.advance(7000s);
  stopRecording();
  clock.advance(1s);
  startRecording();
  clock.advance(1000s);
  EXPECT_EQ(appState->phase(), Phase::recording());
}

TEST_F(AppStateRecordingTest, ChunksLeaveWhileTheUserSpeaksAndTheTailFollowsTheStop) {
  startUp();
  http.answer(chunkPath, 200, success(u" one "_s));
  http.answer(chunkPath, 200, success(u"two"_s));
  http.answer(finalizePath, 200, success(u"One two."_s));
  startRecording();
  hear(15.1);
  EXPECT_EQ(requestCount(chunkPath), 1);
  EXPECT_TRUE(storage.hasLogged(u"chunk #0 transcribed OK (5 chars)"_s));
  hear(4.9);
  stopRecording();
  EXPECT_EQ(requestCount(chunkPath), 2);
  EXPECT_EQ(bodyOfFinalize(), u"one two"_s);
  finishPaste();
  EXPECT_THAT(pastedTexts(), ElementsAre(u"One two."_s));
}

TEST_F(AppStateRecordingTest, ASilentRecordingOf20sHasSentOneChunkAndThenFails) {
  startUp();
  http.answer(chunkPath, 200, success(u"late"_s), 7s);
  hedgeHttp.neverAnswer(chunkPath);
  startRecording();
  hear(20.0, 0);
  takeEvents();
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::error(u"No audio detected — check your microphone"_s));
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_failed {"chunked":true,"reason":"no_audio"})"));
  EXPECT_EQ(requestCount(chunkPath), 1);
  clock.advance(3s);
  EXPECT_TRUE(storage.hasLogged(u"chunk #0 transcribed OK (4 chars)"_s))
      << "the late result still lands";
  http.answer(chunkPath, 200, success(u"new"_s));
  http.answer(chunkPath, 200, success(u"tail"_s));
  http.answer(finalizePath, 200, success(u"new tail"_s));
  startRecording();
  hear(16.0);
  stopRecording();
  EXPECT_EQ(bodyOfFinalize(), u"new tail"_s) << "thrown away at the next start";
}

TEST_F(AppStateRecordingTest, WithAllChunksFailedAndATailUnder300msTheUserSeesThePillGoAway) {
  startUp();
  http.answer(chunkPath, 400);
  startRecording();
  hear(15.29);
  takeEvents();
  hud.takeCalls();
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showTranscribing", "hide"));
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_failed {"chunked":true,"reason":"empty_transcript"})"));
  EXPECT_EQ(requestCount(chunkPath), 1) << "the tail is thrown away unsent";
  EXPECT_EQ(requestCount(finalizePath), 0);
  EXPECT_TRUE(storage.hasLogged(u"chunk #0 transcription error: server"_s));
}

TEST_F(AppStateRecordingTest, ATailOfExactly300msIsSent) {
  startUp();
  http.answer(chunkPath, 200, success(u"one"_s));
  http.answer(chunkPath, 200, success(u"two"_s));
  http.answer(finalizePath, 200, success(u"one two"_s));
  startRecording();
  hear(15.3);
  stopRecording();
  EXPECT_EQ(requestCount(chunkPath), 2);
}

TEST_F(AppStateRecordingTest, AFailedFirstChunkLeavesAHoleAndTheOthersAreFinalized) {
  startUp();
  http.answer(chunkPath, 400);
  http.answer(chunkPath, 200, success(u"second"_s));
  http.answer(finalizePath, 200, success(u"Second."_s));
  startRecording();
  hear(30.0);
  stopRecording();
  EXPECT_EQ(bodyOfFinalize(), u"second"_s);
}

TEST_F(AppStateRecordingTest, ARecordingOfExactly15sHasNoTailUpload) {
  startUp();
  http.answer(chunkPath, 200, success(u"all"_s));
  http.answer(finalizePath, 200, success(u"All."_s));
  startRecording();
  hear(15.0);
  stopRecording();
  EXPECT_EQ(requestCount(chunkPath), 1);
  EXPECT_EQ(bodyOfFinalize(), u"all"_s);
}

TEST_F(AppStateRecordingTest, AFailedTailFailsTheDictation) {
  startUp();
  http.answer(chunkPath, 200, success(u"one"_s));
  http.answer(chunkPath, 400, R"({"status":"error","error":"Too busy"})");
  startRecording();
  hear(16.0);
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::error(u"Too busy"_s));
  EXPECT_EQ(requestCount(finalizePath), 0);
}

TEST_F(AppStateRecordingTest, FinalizeWaitsForChunksThatAreStillUnderWay) {
  startUp();
  http.answer(chunkPath, 200, success(u"slow"_s), 4s);
  http.answer(chunkPath, 200, success(u"tail"_s));
  http.answer(finalizePath, 200, success(u"Slow tail."_s));
  startRecording();
  hear(15.5);
  stopRecording();
  EXPECT_EQ(requestCount(finalizePath), 0);
  clock.advance(4s);
  EXPECT_EQ(bodyOfFinalize(), u"slow tail"_s);
}

TEST_F(AppStateRecordingTest, AChunkThatArrivesAfterTheStopIsDropped) {
  startUp();
  http.answer(finalizePath, 200, success(u"unused"_s));
  startRecording();
  hear(14.95);
  const std::vector<std::int16_t> rest(1600, 8000);
  audioInput.deliver(rest);  // completes the chunk; its call waits in the main queue
  appState->toggleFromButton();
  mainThread.drain();
  EXPECT_EQ(requestCount(chunkPath), 0);
  EXPECT_EQ(appState->phase(), Phase::idle()) << "the tail of 0.05 s isn't sent either";
}

TEST_F(AppStateRecordingTest, AChunkOfAnOlderRecordingDoesNotReachTheNewOne) {
  startUp();
  http.answer(chunkPath, 200, success(u"old"_s), 4s);
  startRecording();
  hear(15.1);
  appState->setEnabled(false);
  appState->setEnabled(true);
  clock.advance(1s);
  http.answer(chunkPath, 200, success(u"new"_s));
  http.answer(finalizePath, 200, success(u"New."_s));
  startRecording();
  hear(15.0);
  stopRecording();
  EXPECT_EQ(bodyOfFinalize(), u"new"_s);
}

TEST_F(AppStateRecordingTest, AllRequestsOfARecordingCarryOneSessionIdAndTheNextAnother) {
  startUp();
  for (int recording = 0; recording < 2; ++recording) {
    http.answer(chunkPath, 200, success(u"a"_s));
    http.answer(chunkPath, 200, success(u"b"_s));
    http.answer(finalizePath, 200, success(u"a b"_s));
    startRecording();
    hear(16.0);
    stopRecording();
    finishPaste();
  }
  std::vector<QByteArray> ids;
  for (const auto& request : http.requests()) {
    for (const auto& [name, value] : request.headers) {
      if (name == "x-session-id") ids.push_back(value);
    }
  }
  ASSERT_EQ(ids.size(), 6u);
  EXPECT_EQ(ids[0], ids[1]);
  EXPECT_EQ(ids[0], ids[2]);
  EXPECT_NE(ids[0], ids[3]);
  EXPECT_EQ(ids[0], ids[0].toUpper());
}

}  // namespace
}  // namespace vemo
