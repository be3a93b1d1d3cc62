#include "transcription/HedgedSend.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "fakes/FakeClock.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeMainThread.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;

const QString path = u"/x"_s;
const QString hedgeLine = u"L: no answer after 5s, sending a second copy"_s;

class HedgedSendTest : public testing::Test {
 protected:
  void send() {
    task = scope.start([this](std::stop_token stop) { return keepResult(stop); });
    mainThread.drain();
  }

  void cancel() {
    task.cancel();
    mainThread.drain();
  }

  std::optional<int> status() const {
    return result && result->has_value() ? result->value().status : std::nullopt;
  }

  std::optional<UrlError> error() const {
    return result && !result->has_value() ? std::optional(result->error().code) : std::nullopt;
  }

  bool isFinished() const { return result.has_value(); }

  /// Nothing that the send started is left.
  void expectNothingLeft() {
    EXPECT_EQ(session.openCount(), 0);
    EXPECT_EQ(hedgeSession.openCount(), 0);
    EXPECT_EQ(clock.sleeperCount(), 0u);
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeHttpSession session{mainThread, clock};
  FakeHttpSession hedgeSession{mainThread, clock};
  HttpRequest request{.method = "POST"_ba,
                      .url = QUrl(u"https://example.org/x"_s),
                      .headers = {{"A"_ba, "1"_ba}, {"B"_ba, "2"_ba}},
                      .body = QByteArray(1000, 'x'),
                      .timeout = 60s};
  std::optional<HttpResult> result;
  StartedTask task;
  std::unique_ptr<TaskScope> ownedScope = std::make_unique<TaskScope>(mainThread);
  TaskScope& scope = *ownedScope;

 private:
  Task<> keepResult(std::stop_token stop) {
    HedgedSend hedgedSend(session, hedgeSession, clock, mainThread, storage.debugLog);
    result = co_await hedgedSend.send(request, u"L"_s, stop);
    // Whatever the send started has ended by the time it returns.
    expectNothingLeft();
  }
};

TEST_F(HedgedSendTest, AnAnswerWithinFiveSecondsNeedsNoSecondCopy) {
  session.answer(path, 200, "a", 4999ms);
  send();
  clock.advance(4999ms);
  EXPECT_EQ(status(), 200);
  clock.advance(1h);
  EXPECT_EQ(hedgeSession.requests().size(), 0u);
  EXPECT_FALSE(storage.hasLogged(hedgeLine));
}

TEST_F(HedgedSendTest, TheSecondCopyGoesOutAtFiveSecondsAndNotBefore) {
  session.neverAnswer(path);
  hedgeSession.neverAnswer(path);
  send();
  clock.advance(4999ms);
  EXPECT_EQ(hedgeSession.requests().size(), 0u);
  EXPECT_FALSE(storage.hasLogged(hedgeLine));
  clock.advance(1ms);
  EXPECT_EQ(hedgeSession.requests().size(), 1u);
  EXPECT_TRUE(storage.hasLogged(hedgeLine));
}

TEST_F(HedgedSendTest, ThereIsAtMostOneSecondCopy) {
  session.neverAnswer(path);
  hedgeSession.neverAnswer(path);
  send();
  clock.advance(59s);
  EXPECT_EQ(session.requests().size(), 1u);
  EXPECT_EQ(hedgeSession.requests().size(), 1u);
}

TEST_F(HedgedSendTest, TheSecondCopyEqualsTheFirst) {
  session.neverAnswer(path);
  hedgeSession.answer(path, 200);
  send();
  clock.advance(5s);
  const auto& first = session.requests().at(0);
  const auto& second = hedgeSession.requests().at(0);
  EXPECT_EQ(first.url, second.url);
  EXPECT_EQ(first.headers, second.headers);
  EXPECT_EQ(first.method, second.method);
  EXPECT_EQ(first.timeout, second.timeout);
  EXPECT_EQ(first.body.constData(), second.body.constData());
}

TEST_F(HedgedSendTest, ASecondCopyThatAnswersWinsAndTheFirstIsCancelled) {
  session.neverAnswer(path);
  hedgeSession.answer(path, 200, "second", 1s);
  send();
  clock.advance(5999ms);
  EXPECT_FALSE(isFinished());
  clock.advance(1ms);
  EXPECT_EQ(status(), 200);
  EXPECT_EQ(result->value().body, "second");
  EXPECT_EQ(session.cancellationCount(), 1);
}

TEST_F(HedgedSendTest, AFirstCopyThatAnswersLateWinsAndTheSecondIsCancelled) {
  session.answer(path, 200, "first", 7s);
  hedgeSession.neverAnswer(path);
  send();
  clock.advance(7s);
  EXPECT_EQ(result->value().body, "first");
  EXPECT_EQ(hedgeSession.cancellationCount(), 1);
}

TEST_F(HedgedSendTest, AFailingStatusIsAnAnswerAndWins) {
  session.answer(path, 503, {}, 6s);
  hedgeSession.answer(path, 200, {}, 10s);
  send();
  clock.advance(6s);
  EXPECT_EQ(status(), 503);
}

TEST_F(HedgedSendTest, SomethingThatSpeaksNoHttpIsAnAnswer) {
  session.answerWithoutStatus(path);
  send();
  ASSERT_TRUE(isFinished());
  EXPECT_TRUE(result->has_value());
  EXPECT_EQ(status(), std::nullopt);
}

TEST_F(HedgedSendTest, AFirstCopyThatFailsWithinFiveSecondsEndsTheSendAtOnce) {
  session.fail(path, UrlError::CannotConnectToHost, 4999ms);
  send();
  clock.advance(4999ms);
  EXPECT_EQ(error(), UrlError::CannotConnectToHost);
  clock.advance(1h);
  EXPECT_EQ(hedgeSession.requests().size(), 0u);
}

TEST_F(HedgedSendTest, AFailureWhileTheOtherCopyIsUnderWayWaitsForThat) {
  session.fail(path, UrlError::NetworkConnectionLost, 6s);
  hedgeSession.answer(path, 200, {}, 3s);
  send();
  clock.advance(7999ms);
  EXPECT_FALSE(isFinished());
  clock.advance(1ms);
  EXPECT_EQ(status(), 200);
}

TEST_F(HedgedSendTest, WhenBothCopiesFailTheErrorThatCameLastIsReturned) {
  session.fail(path, UrlError::NetworkConnectionLost, 9s);
  hedgeSession.fail(path, UrlError::CannotConnectToHost, 2s);
  send();
  clock.advance(7s);
  EXPECT_FALSE(isFinished());
  clock.advance(2s);
  EXPECT_EQ(error(), UrlError::NetworkConnectionLost);
}

TEST_F(HedgedSendTest, WhenTheSecondCopyFailsLastItsErrorIsReturned) {
  session.fail(path, UrlError::NetworkConnectionLost, 6s);
  hedgeSession.fail(path, UrlError::CannotConnectToHost, 2s);
  send();
  clock.advance(7s);
  EXPECT_EQ(error(), UrlError::CannotConnectToHost);
}

TEST_F(HedgedSendTest, CancellingWhileTheTimerRunsSendsNoSecondCopy) {
  session.neverAnswer(path);
  send();
  clock.advance(3s);
  cancel();
  EXPECT_EQ(error(), UrlError::Cancelled);
  EXPECT_EQ(session.cancellationCount(), 1);
  clock.advance(1h);
  EXPECT_EQ(hedgeSession.requests().size(), 0u);
  EXPECT_FALSE(storage.hasLogged(hedgeLine));
}

TEST_F(HedgedSendTest, CancellingWithTwoCopiesUnderWayCancelsBoth) {
  session.neverAnswer(path);
  hedgeSession.neverAnswer(path);
  send();
  clock.advance(6s);
  cancel();
  EXPECT_EQ(error(), UrlError::Cancelled);
  EXPECT_EQ(session.cancellationCount(), 1);
  EXPECT_EQ(hedgeSession.cancellationCount(), 1);
}

TEST_F(HedgedSendTest, CancellingAtTheMomentTheHedgeFallsDueSendsNoSecondCopy) {
  session.neverAnswer(path);
  send();
  clock.advance(4999ms);
  task.cancel();  // the queue hasn't run yet when the timer falls due
  clock.advance(1ms);
  EXPECT_EQ(error(), UrlError::Cancelled);
  EXPECT_EQ(hedgeSession.requests().size(), 0u);
}

TEST_F(HedgedSendTest, BothCopiesMayTimeOut) {
  session.neverAnswer(path);
  hedgeSession.neverAnswer(path);
  send();
  clock.advance(64999ms);
  EXPECT_FALSE(isFinished());
  clock.advance(1ms);
  EXPECT_EQ(error(), UrlError::TimedOut);
}

TEST_F(HedgedSendTest, DestroyingItsOwnerEndsBothCopiesAndTheTimer) {
  session.neverAnswer(path);
  hedgeSession.neverAnswer(path);
  send();
  clock.advance(6s);
  ownedScope.reset();
  expectNothingLeft();
  clock.advance(1h);
  EXPECT_FALSE(isFinished());
}

}  // namespace
}  // namespace vemo
