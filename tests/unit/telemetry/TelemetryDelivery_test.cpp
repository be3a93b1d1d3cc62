// How events leave the queue.
#include "TelemetryFixture.h"

namespace vemo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class TelemetryDeliveryTest : public TelemetryFixture {
 protected:
  TelemetryDeliveryTest() { signIn(); }

  /// A launch whose reports are answered, and whose own event has been delivered.
  void launch() {
    with.http.answer(installPath, 200);
    with.http.answer(devicePath, 200);
    with.http.answer(eventsPath, 200);
    telemetry.start(false);
    telemetry.flush();
    settle();
    ASSERT_THAT(telemetry.queue(), IsEmpty());
  }

  /// What a batch of ten leaves in the queue when it is answered this way.
  std::size_t leftAfterStatus(int status) {
    with.http.answer(eventsPath, status);
    return leftOfTen();
  }
  std::size_t leftOfTen() {
    trackNumbered(1, 10);
    telemetry.flush();
    settle();
    const std::size_t left = telemetry.queue().size();
    if (left > 0) {
      with.http.answer(eventsPath, 200);
      telemetry.flush();
      settle();
    }
    return left;
  }
};

TEST_F(TelemetryDeliveryTest, TheTwentiethEventOfASignedInUserTriggersAFlush) {
  with.http.answer(eventsPath, 200);
  trackNumbered(1, 19);
  settle();
  EXPECT_THAT(with.http.requests(), IsEmpty());
  trackNumbered(20, 20);
  settle();
  ASSERT_THAT(with.http.requests(), SizeIs(1));
  EXPECT_EQ(eventsIn(with.http.requests()[0]).size(), 20);
  EXPECT_THAT(telemetry.queue(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, ABatchIsOnTheWireAsAgreed) {
  with.http.answer(eventsPath, 200);
  settings.set(keys::telemetryInstallId, u"INSTALLATION"_s);
  telemetry.track(TelemetryEvent::signInFailed(u"network"));
  telemetry.flush();
  settle();
  ASSERT_THAT(with.http.requests(), SizeIs(1));
  const auto& request = with.http.requests()[0];
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.url, with.configuration.api(u"desktop/events"_s));
  EXPECT_EQ(request.timeout, 15s);
  const std::vector<std::pair<QByteArray, QByteArray>> headers{
      {"Authorization", "Bearer token"}, {"Content-Type", "application/json"},
      {"x-platform", "macos"},           {"x-device-id", "INSTALLATION"},
      {"x-app-version", "1.2.0 (34)"},   {"x-os-version", "Debian GNU/Linux 12 (bookworm)"}};
  EXPECT_EQ(request.headers, headers);
  EXPECT_EQ(request.body.toStdString(),
            R"({"events":[{"at":"2026-03-14T00:00:00Z","name":"sign_in_failed",)"
            R"("props":{"reason":"network"}}]})");
}

TEST_F(TelemetryDeliveryTest, EachTickSendsFiftyOfALongQueue) {
  launch();
  signOut();
  trackNumbered(1, 120);
  signIn();
  for (const std::size_t left : {70, 20, 0}) {
    with.http.answer(eventsPath, 200);
    clock.advance(60s);
    EXPECT_THAT(telemetry.queue(), SizeIs(left));
  }
}

TEST_F(TelemetryDeliveryTest, AQueueOf120GoesFiftyAtATimeAndTheRestWaitsForTheNextTick) {
  signOut();
  trackNumbered(1, 120);
  signIn();
  with.http.answer(eventsPath, 200);
  telemetry.flush();
  settle();
  ASSERT_THAT(telemetry.queue(), SizeIs(70));
  EXPECT_EQ(firstNumber(), 51);

  with.http.answer(eventsPath, 200);
  trackNumbered(121, 121);
  settle();
  EXPECT_THAT(telemetry.queue(), SizeIs(21)) << "the next event found 20 or more, and flushed";
}

TEST_F(TelemetryDeliveryTest, AFlushWhileOneIsInFlightDoesNothing) {
  with.http.answer(eventsPath, 200, {}, 1s);
  trackNumbered(1, 1);
  telemetry.flush();
  settle();
  trackNumbered(2, 40);
  telemetry.flush();
  settle();
  EXPECT_THAT(with.http.requests(), SizeIs(1));
  clock.advance(1s);
  EXPECT_THAT(telemetry.queue(), SizeIs(39));
}

TEST_F(TelemetryDeliveryTest, NothingIsSentWithoutATokenOrWithoutEvents) {
  telemetry.flush();
  signOut();
  trackNumbered(1, 30);
  telemetry.flush();
  settle();
  EXPECT_THAT(with.http.requests(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, ABatchIsGoneAfterSuccessAndAfterARefusalForGood) {
  for (const int status : {200, 204, 299, 400, 403, 499})
    EXPECT_EQ(leftAfterStatus(status), 0) << status;
}

TEST_F(TelemetryDeliveryTest, ABatchComesBackAfterEverythingElse) {
  for (const int status : {199, 300, 401, 500, 503, 600})
    EXPECT_EQ(leftAfterStatus(status), 10) << status;
  with.http.answerWithoutStatus(eventsPath);
  EXPECT_EQ(leftOfTen(), 10);
  with.http.fail(eventsPath, UrlError::NetworkConnectionLost);
  EXPECT_EQ(leftOfTen(), 10);
}

TEST_F(TelemetryDeliveryTest, ABatchThatComesBackStandsBeforeWhatCameMeanwhile) {
  with.http.answer(eventsPath, 500, {}, 1s);
  trackNumbered(1, 10);
  telemetry.flush();
  settle();
  trackNumbered(11, 12);
  clock.advance(1s);
  ASSERT_THAT(telemetry.queue(), SizeIs(12));
  EXPECT_EQ(firstNumber(), 1);
  EXPECT_EQ(lastNumber(), 12);
}

TEST_F(TelemetryDeliveryTest, RestoringFiftyOntoAQueueOf180DropsTheThirtyOldest) {
  signOut();
  trackNumbered(1, 50);
  signIn();
  with.http.answer(eventsPath, 500, {}, 1s);
  telemetry.flush();
  settle();
  trackNumbered(51, 230);
  clock.advance(1s);
  EXPECT_THAT(telemetry.queue(), SizeIs(200));
  EXPECT_EQ(firstNumber(), 31);
  EXPECT_EQ(lastNumber(), 230);
}

TEST_F(TelemetryDeliveryTest, AFailedBatchWaitsForTheNextTickAndTheOneAfterThat) {
  launch();
  with.http.answer(eventsPath, 500);
  with.http.answer(eventsPath, 500);
  with.http.answer(eventsPath, 200);
  trackNumbered(1, 1);
  clock.advance(59s + 999ms);
  EXPECT_THAT(requestsTo(eventsPath), SizeIs(1));
  clock.advance(1ms);
  EXPECT_THAT(requestsTo(eventsPath), SizeIs(2));
  clock.advance(60s);
  EXPECT_THAT(requestsTo(eventsPath), SizeIs(3));
  clock.advance(60s);
  EXPECT_THAT(requestsTo(eventsPath), SizeIs(4));
  EXPECT_THAT(telemetry.queue(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, TheTimerTicksEachMinuteFromTheStartOn) {
  launch();
  with.http.answer(eventsPath, 200);
  clock.advance(10min + 50s);
  trackNumbered(1, 1);
  clock.advance(9s + 999ms);
  EXPECT_THAT(requestsTo(eventsPath), SizeIs(1));
  clock.advance(1ms);
  EXPECT_THAT(requestsTo(eventsPath), SizeIs(2));
}

TEST_F(TelemetryDeliveryTest, AnEmptyQueueWakesNobody) {
  launch();
  clock.advance(60s);
  EXPECT_EQ(clock.sleeperCount(), 0);
  trackNumbered(1, 1);
  settle();
  EXPECT_EQ(clock.sleeperCount(), 1);
}

TEST_F(TelemetryDeliveryTest, BeforeTheStartNoTimerRuns) {
  trackNumbered(1, 1);
  clock.advance(5min);
  EXPECT_THAT(with.http.requests(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, DrainingSendsFiftyDropsTheRestAndIgnoresTheAnswer) {
  signOut();
  trackNumbered(1, 51);
  signIn();
  with.http.answer(eventsPath, 500);
  telemetry.drainForAccountChange();
  EXPECT_THAT(telemetry.queue(), IsEmpty());
  signOut();
  settle();
  ASSERT_THAT(with.http.requests(), SizeIs(1));
  EXPECT_EQ(eventsIn(with.http.requests()[0]).size(), 50);
  EXPECT_EQ(with.http.requests()[0].headers[0].second, "Bearer token");
  EXPECT_THAT(telemetry.queue(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, ABatchUnderWayWhenTheAccountChangesDoesNotComeBackForTheNextOne) {
  with.http.answer(eventsPath, 500, {}, 1s);
  trackNumbered(1, 10);
  telemetry.flush();
  settle();
  telemetry.drainForAccountChange();
  trackNumbered(11, 11);
  clock.advance(1s);
  ASSERT_THAT(telemetry.queue(), SizeIs(1));
  EXPECT_EQ(firstNumber(), 11);

  with.http.answer(eventsPath, 500);
  telemetry.flush();
  settle();
  EXPECT_THAT(telemetry.queue(), SizeIs(1)) << "a batch of the account that is signed in does";
}

TEST_F(TelemetryDeliveryTest, DrainingWhileSignedOutDropsEverything) {
  signOut();
  trackNumbered(1, 30);
  telemetry.drainForAccountChange();
  settle();
  EXPECT_THAT(telemetry.queue(), IsEmpty());
  EXPECT_THAT(with.http.requests(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, TheEndOfASessionSendsFiftyOfEightyAndWaitsTwoSeconds) {
  signOut();
  trackNumbered(1, 80);
  signIn();
  telemetry.endSession();
  ASSERT_THAT(with.lastRequest.requests, SizeIs(1));
  const auto& [request, longest] = with.lastRequest.requests[0];
  EXPECT_EQ(request.url.path(), eventsPath);
  EXPECT_EQ(eventsIn(request).size(), 50);
  EXPECT_EQ(longest, 2s);
  EXPECT_THAT(telemetry.queue(), IsEmpty());
}

TEST_F(TelemetryDeliveryTest, TheEndOfASessionTellsItsWholeSeconds) {
  clock.advance(90s + 999ms);
  telemetry.endSession();
  ASSERT_THAT(with.lastRequest.requests, SizeIs(1));
  const auto event = eventsIn(with.lastRequest.requests[0].first)[0].toObject();
  EXPECT_EQ(event.value(u"name"), u"session_ended"_s);
  EXPECT_EQ(event.value(u"props"), (QJsonObject{{u"seconds"_s, 90}}));
}

TEST_F(TelemetryDeliveryTest, NobodyWaitsAtTheEndWithoutATokenOrWithoutEvents) {
  settings.set(keys::shareUsageStatistics, false);
  telemetry.endSession();
  signOut();
  trackNumbered(1, 1);
  telemetry.endSession();
  EXPECT_THAT(with.lastRequest.requests, IsEmpty());
}

}  // namespace
}  // namespace vemo
