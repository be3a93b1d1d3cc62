// From audio to text: the whole recording, the streaming slot, failures, and what comes back late.

#include "fakes/FakeWebSocket.h"
#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AppStateTranscriptionTest : public SessionFixture {
 protected:
  /// A recording of `seconds` with a streaming session in the slot, stopped.
  std::shared_ptr<StreamingDictationSession> stopStreamed(double seconds) {
    auto stream = std::make_shared<StreamingDictationSession>(std::make_unique<FakeWebSocket>(peer),
                                                              clock, mainThread, storage.debugLog);
    startRecording();
    appState->setStream(stream);
    hear(seconds);
    stopRecording();
    return stream;
  }

  std::shared_ptr<FakeWebSocket::Peer> peer = std::make_shared<FakeWebSocket::Peer>(mainThread);
};

TEST_F(AppStateTranscriptionTest, AShortRecordingGoesWholeToTheService) {
  startUp();
  dictate(u"hello"_s);
  ASSERT_EQ(http.requests().size(), 1u);
  EXPECT_EQ(http.requests()[0].url.path(), dictatePath);
  EXPECT_EQ(http.requests()[0].body.size(), 32'044);
  EXPECT_EQ(appState->phase(), Phase::injecting());
}

TEST_F(AppStateTranscriptionTest, AnEmptyTranscriptEndsInSilence) {
  startUp();
  dictate(u" \n "_s);
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(hud.takeCalls(), ElementsAre("showRecording", "showTranscribing", "hide"));
  EXPECT_THAT(pastedTexts(), IsEmpty());
  EXPECT_THAT(takeEvents().back(),
              R"(dictation_failed {"chunked":false,"reason":"empty_transcript"})");
}

TEST_F(AppStateTranscriptionTest, EveryFailureIsShownReportedAndLoggedWithoutItsText) {
  struct Case {
    int status;
    const char* body;
    const char* message;
    const char* reason;
    QString logged;
  };
  for (const Case& failure : {
           Case{400, R"({"status":"error","error":"secret words"})", "secret words", "server",
                u"error: server"_s},
           Case{400, "<html>", "Request failed (HTTP 400)", "server", u"error: server"_s},
           Case{200, "<html>", "Unexpected server response", "bad_response",
                u"error: badResponse"_s},
           Case{200, R"({"status":"success","transcr)", "Unexpected server response",
                "bad_response", u"error: badResponse"_s},
           Case{200, "", "Unexpected server response", "bad_response", u"error: badResponse"_s},
           Case{302, "", "Request failed (HTTP 302)", "server", u"error: server"_s},
       }) {
    if (!appState) startUp();
    takeEvents();
    http.answer(dictatePath, failure.status, failure.body);
    startRecording();
    hear(1.0);
    stopRecording();
    EXPECT_EQ(appState->phase(), Phase::error(QString::fromUtf8(failure.message)));
    EXPECT_EQ(hud.takeCalls().back(), "showError(" + std::string(failure.message) + ")");
    EXPECT_THAT(takeEvents(), testing::Contains(R"(dictation_failed {"chunked":false,"reason":")" +
                                                std::string(failure.reason) + R"("})"));
    EXPECT_TRUE(storage.hasLogged(failure.logged));
    clock.advance(3s);
  }
  EXPECT_FALSE(storage.logMessages().join(u'\n').contains(u"secret words"_s));
}

TEST_F(AppStateTranscriptionTest, ANetworkFailureShowsItsSentenceAfterThreeAttempts) {
  startUp();
  for (int attempt = 0; attempt < 3; ++attempt) http.fail(dictatePath, UrlError::CannotFindHost);
  startRecording();
  hear(1.0);
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::error(u"Can't find the server"_s));
  EXPECT_TRUE(storage.hasLogged(u"error: network(URLError -1003)"_s));
}

TEST_F(AppStateTranscriptionTest, AnExpiredSessionSignsOutOnThisMachineAndSaysSo) {
  startUp();
  http.answer(dictatePath, 401);
  startRecording();
  hear(1.0);
  stopRecording();
  EXPECT_EQ(appState->phase(), Phase::error(u"Sign-in expired — sign in again"_s));
  EXPECT_FALSE(auth->isSignedIn());
  EXPECT_EQ(auth->lastError(), u"Session expired — sign in again"_s);
  EXPECT_FALSE(tokens->read(u"authToken"_s));
  clock.advance(3s);
  appState->handleToggleTrigger();
  EXPECT_EQ(hud.takeCalls().back(), "showError(Please sign in to dictate)");
}

TEST_F(AppStateTranscriptionTest, DisablingWhileTranscribingIsIdleAtOnceAndALateResultDoesNothing) {
  startUp();
  http.answer(dictatePath, 200, success(u"late"_s), 1s);
  startRecording();
  hear(1.0);
  stopRecording();
  ASSERT_EQ(appState->phase(), Phase::transcribing());
  appState->setEnabled(false);
  EXPECT_EQ(appState->phase(), Phase::idle());
  appState->setEnabled(true);
  clock.advance(10s);
  EXPECT_THAT(pastedTexts(), IsEmpty());
  EXPECT_EQ(http.cancellationCount(), 1);
  EXPECT_EQ(http.openCount(), 0);
  EXPECT_TRUE(appState->history().lastTranscript().isEmpty());
}

TEST_F(AppStateTranscriptionTest, AStreamedTextIsTakenAndTheChunksHeldBackAreForgotten) {
  startUp();
  const auto stream = stopStreamed(16.0);
  stream->takeDone(u"streamed"_s);
  mainThread.drain();
  finishPaste();
  EXPECT_THAT(pastedTexts(), ElementsAre(u"streamed"_s));
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_TRUE(storage.hasLogged(u"streaming: transcript OK (8 chars)"_s));
  EXPECT_THAT(takeEvents().at(1), testing::HasSubstr(R"("streamed":true)"));
}

TEST_F(AppStateTranscriptionTest, AFailedStreamFallsBackToTheChunksHeldBackAndTheTail) {
  startUp();
  http.answer(chunkPath, 200, success(u"tail"_s));
  http.answer(chunkPath, 200, success(u"first"_s));
  http.answer(finalizePath, 200, success(u"First tail."_s));
  stopStreamed(16.0);
  takeEvents();
  clock.advance(5'999ms);
  EXPECT_THAT(http.requests(), IsEmpty());
  clock.advance(1ms);
  EXPECT_TRUE(storage.hasLogged(u"streaming: not used (timeout)"_s));
  finishPaste();
  EXPECT_THAT(pastedTexts(), ElementsAre(u"First tail."_s));
  EXPECT_THAT(takeEvents().front(), R"(dictation_stream_fallback {"reason":"after_stop"})");
  EXPECT_EQ(http.unusedCount(), 0u);
}

TEST_F(AppStateTranscriptionTest, AFailedStreamOfAShortRecordingFallsBackToTheWholeOfIt) {
  startUp();
  http.answer(dictatePath, 200, success(u"whole"_s));
  peer->messagesUntilDrop = 0;
  stopStreamed(2.0);
  finishPaste();
  EXPECT_THAT(pastedTexts(), ElementsAre(u"whole"_s));
}

TEST_F(AppStateTranscriptionTest, DisablingWhileAStreamFinishesCancelsItAndPastesNothing) {
  startUp();
  stopStreamed(2.0);
  appState->setEnabled(false);
  mainThread.drain();
  EXPECT_THAT(peer->closeCodes, ElementsAre(1000));
  EXPECT_FALSE(storage.logMessages().join(u'\n').contains(u"streaming: not used"_s));
  EXPECT_EQ(appState->phase(), Phase::idle());
  EXPECT_THAT(http.requests(), IsEmpty());
  EXPECT_THAT(pastedTexts(), IsEmpty());
}

TEST_F(AppStateTranscriptionTest, ATooShortRecordingCancelsItsStream) {
  startUp();
  stopStreamed(0.1);
  EXPECT_THAT(peer->closeCodes, ElementsAre(1000));
  EXPECT_EQ(appState->phase(), Phase::idle());
}

TEST_F(AppStateTranscriptionTest, EndingTheSessionWhileRecordingLeavesNothingBehind) {
  startUp();
  startRecording();
  hear(1.0);
  appState.reset();
  clock.advance(3h);
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(AppStateTranscriptionTest, EndingTheSessionWhileTranscribingEndsTheRequest) {
  startUp();
  http.neverAnswer(dictatePath);
  startRecording();
  hear(1.0);
  stopRecording();
  appState.reset();
  mainThread.drain();
  EXPECT_EQ(http.openCount(), 0);
}

TEST_F(AppStateTranscriptionTest, EndingTheSessionWhileInjectingLeavesNoKeyDown) {
  startUp();
  dictate(u"hello"_s);
  ASSERT_EQ(keyPoster.events().size(), 1u);
  appState.reset();
  clock.advance(3s);
  EXPECT_EQ(keyPoster.events().size(), 2u);
}

TEST_F(AppStateTranscriptionTest, EndingTheSessionInTheErrorPhaseWakesNobody) {
  startUp();
  audioInput.startError = u"broken"_s;
  appState->handleToggleTrigger();
  appState.reset();
  clock.advance(3s);
  EXPECT_EQ(hud.takeCalls().size(), 1u);
}

}  // namespace
}  // namespace vemo
