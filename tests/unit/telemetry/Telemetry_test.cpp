// What becomes an event, and what waits in the queue.
#include "telemetry/Telemetry.h"

#include <QUuid>

#include "TelemetryFixture.h"

namespace vemo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class TelemetryTest : public TelemetryFixture {
 protected:
  /// Reports an attempt at "dictate" that ends `duration` after it has begun.
  void report(std::optional<int> status, Clock::Duration duration,
              const std::optional<HttpError>& error = {}) {
    const auto startedAt = clock.monotonicTime();
    clock.advance(duration);
    telemetry.reportRequestResult(u"dictate"_s, status, startedAt, error);
  }
};

TEST_F(TelemetryTest, TheFirstStartSettlesIdentifierAndTimeAndALaterStartKeepsThem) {
  const QString id = telemetry.installId();
  EXPECT_FALSE(QUuid::fromString(id).isNull());
  EXPECT_EQ(settings.get(keys::telemetryInstallId), id);
  const auto firstLaunch = settings.get(keys::telemetryFirstLaunchAt);
  EXPECT_EQ(firstLaunch, QDateTime(QDate(2026, 3, 14), QTime(0, 0), Qt::UTC));

  clock.advance(24h);
  const TelemetryOnFakes secondStart(mainThread, clock, storage);
  EXPECT_EQ(secondStart.telemetry.installId(), id);
  EXPECT_EQ(settings.get(keys::telemetryFirstLaunchAt), firstLaunch);
}

TEST_F(TelemetryTest, AnEventWaitsWithTheTimeOfItsTracking) {
  clock.advance(1h + 2min + 3s + 999ms);
  telemetry.track(TelemetryEvent::signInFailed(u"network"));
  ASSERT_THAT(telemetry.queue(), SizeIs(1));
  EXPECT_EQ(queued(0).name(), u"sign_in_failed"_s);
  EXPECT_EQ(iso8601(telemetry.queue().front().at), u"2026-03-14T01:02:03Z"_s);
}

TEST_F(TelemetryTest, WithSharingOffOptionalEventsNeverEnterTheQueueAndEssentialOnesDo) {
  settings.set(keys::shareUsageStatistics, false);
  telemetry.track(TelemetryEvent::transcriptCopied());
  telemetry.track(TelemetryEvent::dictationFailed(u"no_audio", false));
  EXPECT_EQ(queuedNames(), QStringList{u"dictation_failed"_s});
}

TEST_F(TelemetryTest, AnEventThatIsDroppedAtTheDoorFlushesNothing) {
  trackNumbered(1, 20);
  signIn();
  settings.set(keys::shareUsageStatistics, false);
  telemetry.track(TelemetryEvent::transcriptCopied());
  settle();
  EXPECT_THAT(with.http.requests(), IsEmpty());
}

TEST_F(TelemetryTest, SharingIsOnWhenTheSettingIsMissingOrOfAnotherType) {
  telemetry.track(TelemetryEvent::transcriptCopied());
  settings.set(keys::String{u"shareUsageStatistics"}, u"false"_s);
  telemetry.track(TelemetryEvent::transcriptCopied());
  settings.set(keys::shareUsageStatistics, true);
  telemetry.track(TelemetryEvent::transcriptCopied());
  EXPECT_THAT(telemetry.queue(), SizeIs(3));
}

TEST_F(TelemetryTest, WithoutATokenTheQueueGrowsToTheNewestTwoHundred) {
  trackNumbered(1, 200);
  EXPECT_EQ(firstNumber(), 1);
  trackNumbered(201, 201);
  settle();
  EXPECT_THAT(telemetry.queue(), SizeIs(200));
  EXPECT_EQ(firstNumber(), 2);
  EXPECT_EQ(lastNumber(), 201);
  EXPECT_THAT(with.http.requests(), IsEmpty());
}

TEST_F(TelemetryTest, AHundredThousandEventsLeaveTheNewestTwoHundred) {
  trackNumbered(1, 100'000);
  EXPECT_THAT(telemetry.queue(), SizeIs(200));
  EXPECT_EQ(firstNumber(), 99'801);
}

TEST_F(TelemetryTest, TurningSharingOffKeepsTheEssentialEventsInTheirOrder) {
  telemetry.track(TelemetryEvent::transcriptCopied());
  trackNumbered(1, 1);
  telemetry.track(TelemetryEvent::signInStarted());
  trackNumbered(2, 2);
  telemetry.setShareUsageStatistics(false);
  ASSERT_THAT(telemetry.queue(), SizeIs(2));
  EXPECT_EQ(firstNumber(), 1);
  EXPECT_EQ(lastNumber(), 2);
  EXPECT_EQ(settings.get(keys::shareUsageStatistics), false);
}

TEST_F(TelemetryTest, TurningSharingOnDropsNothing) {
  telemetry.track(TelemetryEvent::transcriptCopied());
  telemetry.setShareUsageStatistics(true);
  EXPECT_THAT(telemetry.queue(), SizeIs(1));
  EXPECT_EQ(settings.get(keys::shareUsageStatistics), true);
}

TEST_F(TelemetryTest, TheFirstDictationIsToldOnceWithTheSecondsSinceTheFirstLaunch) {
  clock.advance(90s + 900ms);
  telemetry.recordFirstDictation();
  telemetry.recordFirstDictation();
  ASSERT_EQ(queuedNames(), QStringList{u"first_dictation"_s});
  EXPECT_EQ(queued(0).props(), (QJsonObject{{u"secondsSinceFirstLaunch"_s, 90}}));
}

TEST_F(TelemetryTest, WithoutATimeOfFirstLaunchTheSecondsAreZero) {
  settings.remove(keys::telemetryFirstLaunchAt);
  telemetry.recordFirstDictation();
  EXPECT_EQ(queued(0).props(), (QJsonObject{{u"secondsSinceFirstLaunch"_s, 0}}));
}

TEST_F(TelemetryTest, AFirstDictationWhileSharingIsOffIsNeverToldLater) {
  settings.set(keys::shareUsageStatistics, false);
  telemetry.recordFirstDictation();
  EXPECT_EQ(settings.get(keys::telemetryFirstDictationSent), true);
  settings.set(keys::shareUsageStatistics, true);
  telemetry.recordFirstDictation();
  EXPECT_THAT(telemetry.queue(), IsEmpty());
}

TEST_F(TelemetryTest, TheMarkerOfTheFirstDictationIsSetBeforeTheEvent) {
  bool wasQueuedBefore = true;
  const auto observation = settings.changed.observe(
      [&](const QString&) { wasQueuedBefore = !telemetry.queue().empty(); });
  telemetry.recordFirstDictation();
  EXPECT_FALSE(wasQueuedBefore);
  EXPECT_THAT(telemetry.queue(), SizeIs(1));
}

TEST_F(TelemetryTest, AnErrorIsARequestFailedWithItsNumberHoweverLongItTook) {
  report({}, 6s, HttpError{UrlError::TimedOut, u"not for events"_s});
  ASSERT_EQ(queuedNames(), QStringList{u"request_failed"_s});
  EXPECT_EQ(
      queued(0).props(),
      (QJsonObject{{u"endpoint"_s, u"dictate"_s}, {u"error"_s, u"url_-1001"_s}, {u"ms"_s, 6000}}));
}

TEST_F(TelemetryTest, AnErrorGoesBeforeAStatus) {
  report(500, 1ms, HttpError{UrlError::NetworkConnectionLost, {}});
  EXPECT_EQ(queued(0).props().value(u"error"), u"url_-1005"_s);
  EXPECT_FALSE(queued(0).props().contains(u"status"_s));
}

TEST_F(TelemetryTest, AStatusFrom400OnIsARequestFailedExcept401) {
  for (const int status : {399, 400, 401, 402, 500}) report(status, 1ms);
  ASSERT_EQ(queuedNames(), QStringList(3, u"request_failed"_s));
  EXPECT_EQ(queued(0).props(),
            (QJsonObject{{u"endpoint"_s, u"dictate"_s}, {u"status"_s, 400}, {u"ms"_s, 1}}));
  EXPECT_EQ(queued(1).props().value(u"status"), 402);
  EXPECT_EQ(queued(2).props().value(u"status"), 500);
}

TEST_F(TelemetryTest, ARequestIsSlowFrom5000MillisecondsOn) {
  report(200, 4999ms);
  EXPECT_THAT(telemetry.queue(), IsEmpty());
  report(200, 5000ms);
  ASSERT_EQ(queuedNames(), QStringList{u"request_slow"_s});
  EXPECT_EQ(queued(0).props(), (QJsonObject{{u"endpoint"_s, u"dictate"_s}, {u"ms"_s, 5000}}));
}

TEST_F(TelemetryTest, AnAnswerWithoutStatusAndA401CanOnlyBeSlow) {
  report({}, 1ms);
  report(401, 1ms);
  EXPECT_THAT(telemetry.queue(), IsEmpty());
  report({}, 5s);
  report(401, 5s);
  EXPECT_EQ(queuedNames(), QStringList(2, u"request_slow"_s));
}

TEST_F(TelemetryTest, AFailedRequestIsToldWithSharingOff) {
  settings.set(keys::shareUsageStatistics, false);
  report(500, 1ms);
  report(200, 5s);
  EXPECT_THAT(telemetry.queue(), SizeIs(2));
}

}  // namespace
}  // namespace vemo
