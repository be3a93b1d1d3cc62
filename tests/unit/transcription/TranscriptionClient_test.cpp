#include "transcription/TranscriptionClient.h"

#include "TranscriptionFixture.h"

namespace vemo {
namespace {

class TranscriptionClientTest : public TranscriptionFixture {
 protected:
  std::size_t attemptCount() const { return session.requests().size(); }
};

TEST_F(TranscriptionClientTest, WithoutAStoredTokenNothingIsSent) {
  tokens.remove(QString::fromUtf16(authTokenAccount));
  startTranscribe();
  EXPECT_EQ(failure(), Kind::NotConfigured);
  EXPECT_EQ(failureDescription(), u"Sign in to start dictating"_s);
  EXPECT_EQ(attemptCount(), 0u);
  EXPECT_EQ(storage.logMessages().filter(u"transcribe"_s), QStringList());
}

TEST_F(TranscriptionClientTest, AnAddressThatIsNoneIsABadResponseAndNothingIsSent) {
  configuration.apiBaseURL = QUrl();
  startTranscribe();
  EXPECT_EQ(failure(), Kind::BadResponse);
  EXPECT_EQ(attemptCount(), 0u);
}

TEST_F(TranscriptionClientTest, ASuccessReturnsTheText) {
  session.answer(dictatePath, 200, successBody(u"Hello there."_s));
  startTranscribe();
  EXPECT_EQ(text(), u"Hello there."_s);
  EXPECT_EQ(session.requests().at(0).body, wav);
}

TEST_F(TranscriptionClientTest, AnEmptyTextIsASuccess) {
  session.answer(dictatePath, 200, successBody(u""_s));
  startTranscribe();
  EXPECT_EQ(text(), u""_s);
}

TEST_F(TranscriptionClientTest, AnyStatusFrom200To299IsASuccess) {
  for (const int status : {200, 204, 299}) {
    session.answer(dictatePath, status, successBody(u"x"_s));
    startTranscribe();
    EXPECT_EQ(text(), u"x"_s) << status;
  }
}

TEST_F(TranscriptionClientTest, AStatusBesideTheSuccessesAndBelow500IsAFinalRefusal) {
  std::size_t expectedAttempts = 0;
  for (const int status : {100, 199, 300, 302, 399, 400, 404, 429, 499}) {
    session.answer(dictatePath, status, successBody(u"x"_s));
    startTranscribe();
    clock.advance(1min);
    EXPECT_EQ(failureDescription(), u"Request failed (HTTP %1)"_s.arg(status));
    EXPECT_EQ(attemptCount(), ++expectedAttempts);
  }
}

TEST_F(TranscriptionClientTest, A302TakesTheBranchForCodesUpTo499) {
  session.answer(dictatePath, 302, failureBody(u"Moved house"_s));
  startTranscribe();
  EXPECT_EQ(failure(), Kind::Server);
  EXPECT_EQ(failureDescription(), u"Moved house"_s);
}

TEST_F(TranscriptionClientTest, A401IsUnauthorizedAtOnceWhateverItsBody) {
  session.answer(dictatePath, 401, failureBody(u"Token expired"_s));
  startTranscribe();
  EXPECT_EQ(failure(), Kind::Unauthorized);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, ASuccessWithoutTranscriptionIsABadResponseAndNotTriedAgain) {
  session.answer(dictatePath, 200, R"({"status":"ok"})");
  startTranscribe();
  clock.advance(1min);
  EXPECT_EQ(failure(), Kind::BadResponse);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, AnswersThatAreNoJsonAreBadResponses) {
  for (const QByteArray& body :
       {"<html><p>Welcome</p></html>"_ba, ""_ba, successBody(u"long text"_s).chopped(3), "[]"_ba}) {
    session.answer(dictatePath, 200, body);
    startTranscribe();
    EXPECT_EQ(failure(), Kind::BadResponse) << body.toStdString();
  }
}

TEST_F(TranscriptionClientTest, ABodyCutAtTheLimitIsABadResponse) {
  QByteArray body = successBody(u"x"_s.repeated(1'000));
  body.insert(body.size() - 3, QByteArray(100'000'000, 'x'));
  session.answer(dictatePath, 200, body);
  startTranscribe();
  EXPECT_EQ(failure(), Kind::BadResponse);
}

TEST_F(TranscriptionClientTest, A400WithAMessageFailsWithThatTextAfterOneAttempt) {
  session.answer(dictatePath, 400, failureBody(u"Recording too long"_s));
  startTranscribe();
  clock.advance(1min);
  EXPECT_EQ(failure(), Kind::Server);
  EXPECT_EQ(failureDescription(), u"Recording too long"_s);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, A400WithAnHtmlBodyFailsWithItsStatusAfterOneAttempt) {
  session.answer(dictatePath, 400, "<html>Bad request</html>");
  startTranscribe();
  clock.advance(1min);
  EXPECT_EQ(failureDescription(), u"Request failed (HTTP 400)"_s);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, A503ThreeTimesWaitsOneAndTwoSecondsAndFails) {
  for (int i = 0; i < 3; ++i) session.answer(dictatePath, 503);
  const auto start = clock.monotonicTime();
  startTranscribe();
  clock.advance(999ms);
  EXPECT_EQ(attemptCount(), 1u);
  clock.advance(1ms);
  EXPECT_EQ(attemptCount(), 2u);
  clock.advance(1999ms);
  EXPECT_EQ(attemptCount(), 2u);
  clock.advance(1ms);
  EXPECT_EQ(attemptCount(), 3u);
  EXPECT_EQ(failureDescription(), u"Server error (HTTP 503)"_s);
  EXPECT_EQ(session.sendTimes().at(2) - start, 3s);
}

TEST_F(TranscriptionClientTest, TheLastServerMessageIsTheOneThatIsTold) {
  session.answer(dictatePath, 500, failureBody(u"first"_s));
  session.answer(dictatePath, 500);
  session.answer(dictatePath, 599, failureBody(u"last"_s));
  startTranscribe();
  clock.advance(3s);
  EXPECT_EQ(failureDescription(), u"last"_s);
}

TEST_F(TranscriptionClientTest, AStatusOf500IsTriedAgainAnd499IsNot) {
  session.answer(dictatePath, 500);
  session.answer(dictatePath, 499);
  startTranscribe();
  clock.advance(1min);
  EXPECT_EQ(attemptCount(), 2u);
  EXPECT_EQ(failureDescription(), u"Request failed (HTTP 499)"_s);
}

TEST_F(TranscriptionClientTest, ATransportErrorIsTriedAgainWithoutAPause) {
  session.fail(dictatePath, UrlError::CannotConnectToHost);
  session.fail(dictatePath, UrlError::NetworkConnectionLost);
  session.answer(dictatePath, 200, successBody(u"third time"_s));
  startTranscribe();
  EXPECT_EQ(text(), u"third time"_s);
  EXPECT_EQ(session.sendTimes().at(0), session.sendTimes().at(2));
}

TEST_F(TranscriptionClientTest, ThreeTransportErrorsFailWithTheLastOne) {
  session.fail(dictatePath, UrlError::CannotFindHost);
  session.fail(dictatePath, UrlError::CannotConnectToHost);
  session.fail(dictatePath, UrlError::NetworkConnectionLost);
  startTranscribe();
  EXPECT_EQ(failure(), Kind::Network);
  EXPECT_EQ(failureDescription(), u"Connection lost — try again"_s);
  EXPECT_EQ(attemptCount(), 3u);
}

TEST_F(TranscriptionClientTest, A503ThenATransportErrorThenASuccessWaitsOnlyBeforeTheSecond) {
  session.answer(dictatePath, 503);
  session.fail(dictatePath, UrlError::NetworkConnectionLost, 40ms);
  session.answer(dictatePath, 200, successBody(u"done"_s));
  startTranscribe();
  clock.advance(1040ms);
  EXPECT_EQ(text(), u"done"_s);
  EXPECT_EQ(session.sendTimes().at(1) - session.sendTimes().at(0), 1000ms);
  EXPECT_EQ(session.sendTimes().at(2) - session.sendTimes().at(1), 40ms);
}

TEST_F(TranscriptionClientTest, ATransportErrorThenA503WaitsTwoSecondsBeforeTheThird) {
  session.fail(dictatePath, UrlError::NetworkConnectionLost);
  session.answer(dictatePath, 503);
  session.answer(dictatePath, 200, successBody(u"done"_s));
  startTranscribe();
  clock.advance(1999ms);
  EXPECT_FALSE(isFinished());
  clock.advance(1ms);
  EXPECT_EQ(text(), u"done"_s);
}

TEST_F(TranscriptionClientTest, SomethingThatSpeaksNoHttpIsABadResponseAndNotTriedAgain) {
  session.answerWithoutStatus(dictatePath);
  startTranscribe();
  EXPECT_EQ(failure(), Kind::BadResponse);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, ASecondCopyThatAnswersAtSixSecondsIsTheResult) {
  session.neverAnswer(dictatePath);
  hedgeSession.answer(dictatePath, 200, successBody(u"second copy"_s), 1s);
  startTranscribe();
  clock.advance(5999ms);
  EXPECT_FALSE(isFinished());
  clock.advance(1ms);
  EXPECT_EQ(text(), u"second copy"_s);
  EXPECT_EQ(session.cancellationCount(), 1);
}

TEST_F(TranscriptionClientTest, TwoCopiesThatBothFailCountAsOneAttempt) {
  session.fail(dictatePath, UrlError::NetworkConnectionLost, 6s);
  hedgeSession.fail(dictatePath, UrlError::TimedOut, 2s);
  session.answer(dictatePath, 200, successBody(u"attempt two"_s));
  startTranscribe();
  clock.advance(7s);
  EXPECT_EQ(text(), u"attempt two"_s);
  EXPECT_EQ(attemptCount(), 2u);
}

TEST_F(TranscriptionClientTest, EveryAttemptMaySendASecondCopy) {
  for (int i = 0; i < 3; ++i) {
    session.neverAnswer(dictatePath);
    hedgeSession.answer(dictatePath, 503);
  }
  startTranscribe();
  clock.advance(1min);
  EXPECT_EQ(attemptCount(), 3u);
  EXPECT_EQ(hedgeSession.requests().size(), 3u);
  EXPECT_EQ(failureDescription(), u"Server error (HTTP 503)"_s);
}

TEST_F(TranscriptionClientTest, TheStartTimeIsSetAnewForEachAttemptAndTheDictationIdKept) {
  clock.setWallTime(Clock::WallTime(std::chrono::milliseconds(1'773'446'400'123)));
  session.answer(dictatePath, 503);
  session.answer(dictatePath, 200, successBody(u"x"_s));
  startTranscribe();
  clock.advance(1s);
  const auto& first = session.requests().at(0);
  const auto& second = session.requests().at(1);
  EXPECT_EQ(first.headers.back().first, "x-client-start-time");
  EXPECT_EQ(header(first, "x-client-start-time"), "1773446400123");
  EXPECT_EQ(header(second, "x-client-start-time"), "1773446401123");
  EXPECT_EQ(header(first, "x-dictation-id"), header(second, "x-dictation-id"));
  EXPECT_EQ(first.headers.size(), second.headers.size());
}

TEST_F(TranscriptionClientTest, EachCallHasADictationIdOfItsOwn) {
  for (int i = 0; i < 2; ++i) {
    session.answer(dictatePath, 200, successBody(u"x"_s));
    startTranscribe();
  }
  EXPECT_NE(header(session.requests().at(0), "x-dictation-id"),
            header(session.requests().at(1), "x-dictation-id"));
}

TEST_F(TranscriptionClientTest, TheBodyIsNeverCopied) {
  session.answer(dictatePath, 503);
  session.neverAnswer(dictatePath);
  hedgeSession.answer(dictatePath, 200, successBody(u"x"_s));
  startTranscribe();
  clock.advance(6s);
  EXPECT_EQ(text(), u"x"_s);
  for (const auto* sent :
       {&session.requests().at(0), &session.requests().at(1), &hedgeSession.requests().at(0)})
    EXPECT_EQ(sent->body.constData(), wav.constData());
}

TEST_F(TranscriptionClientTest, CancellingWhileTheTimerRunsEndsWithoutAnyFurtherCopyOrAttempt) {
  session.neverAnswer(dictatePath);
  startTranscribe();
  clock.advance(2s);
  cancel();
  EXPECT_EQ(failure(), Kind::Cancelled);
  clock.advance(1h);
  EXPECT_EQ(attemptCount(), 1u);
  EXPECT_EQ(hedgeSession.requests().size(), 0u);
}

TEST_F(TranscriptionClientTest, CancellingDuringAPauseEndsItAtOnceWithoutAFurtherAttempt) {
  session.answer(dictatePath, 503);
  startTranscribe();
  clock.advance(500ms);
  cancel();
  EXPECT_EQ(failure(), Kind::Cancelled);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, ACallThatIsCancelledBeforeItBeginsSendsNothing) {
  task = scope.start([this](std::stop_token stop) {
    return [](Task<Result> operation, std::optional<Result>& result) -> Task<> {
      result = co_await std::move(operation);
    }(client.transcribe(wav, stop), result);
  });
  cancel();
  EXPECT_EQ(failure(), Kind::Cancelled);
  EXPECT_EQ(attemptCount(), 0u);
}

TEST_F(TranscriptionClientTest, ACancelledErrorOfThePlatformIsNotTriedAgain) {
  session.fail(dictatePath, UrlError::Cancelled);
  startTranscribe();
  EXPECT_EQ(failure(), Kind::Cancelled);
  EXPECT_EQ(attemptCount(), 1u);
}

TEST_F(TranscriptionClientTest, AServerThatNeverAnswersCostsSixtyFiveSecondsAnAttempt) {
  for (int i = 0; i < 3; ++i) {
    session.neverAnswer(dictatePath);
    hedgeSession.neverAnswer(dictatePath);
  }
  startTranscribe();
  clock.advance(3 * 65s - 1ms);
  EXPECT_FALSE(isFinished());
  clock.advance(1ms);
  EXPECT_EQ(failureDescription(), u"Server took too long — try again"_s);
}

TEST_F(TranscriptionClientTest, AnyTextPassesUnchanged) {
  const QString texts[] = {
      u"a\0b"_s,
      QString::fromUtf8("👩‍👩‍👧‍👦"),
      QString::fromUtf8("שלום \u202Eabc\u202C مرحبا"),
      QString::fromUtf8("e\u0301 n\u0303 \u0915\u094D\u0937"),
      u"word "_s.repeated(210'000),
  };
  for (const QString& expected : texts) {
    session.answer(dictatePath, 200, successBody(expected));
    startTranscribe();
    EXPECT_EQ(text(), expected);
  }
}

}  // namespace
}  // namespace vemo
