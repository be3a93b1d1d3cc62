#include "telemetry/Telemetry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QUuid>

#include "fakes/FakeClock.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using testing::IsEmpty;
using testing::SizeIs;

class TelemetryTest : public testing::Test {
 protected:
  QStringList queuedNames() const {
    QStringList names;
    for (const auto& event : telemetry.queue()) names.append(event.name);
    return names;
  }

  /// Reports an attempt at "dictate" that ends `duration` after it has begun.
  void report(std::optional<int> status, Clock::Duration duration,
              const std::optional<HttpError>& error = {}) {
    const auto startedAt = clock.monotonicTime();
    clock.advance(duration);
    telemetry.reportRequestResult(u"dictate"_s, status, startedAt, error);
  }

  QTemporaryDir folder;
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  DebugLog debugLog{clock, QString()};
  Settings settings{folder.filePath(u"settings.json"_s), debugLog};
  Telemetry telemetry{clock, settings};
};

TEST_F(TelemetryTest, TheFirstStartSettlesIdentifierAndTimeAndALaterStartKeepsThem) {
  const QString id = telemetry.installId();
  EXPECT_FALSE(QUuid::fromString(id).isNull());
  EXPECT_EQ(settings.get(keys::telemetryInstallId), id);
  const auto firstLaunch = settings.get(keys::telemetryFirstLaunchAt);
  EXPECT_EQ(firstLaunch, QDateTime(QDate(2026, 3, 14), QTime(0, 0), Qt::UTC));

  clock.advance(24h);
  const Telemetry secondStart(clock, settings);
  EXPECT_EQ(secondStart.installId(), id);
  EXPECT_EQ(settings.get(keys::telemetryFirstLaunchAt), firstLaunch);
}

TEST_F(TelemetryTest, AnEventHasNamePropertiesTimeAndClass) {
  clock.advance(1h + 2min + 3s + 999ms);
  telemetry.track(u"sign_in_failed"_s, {{u"reason"_s, u"network"_s}});
  ASSERT_THAT(telemetry.queue(), SizeIs(1));
  const auto& event = telemetry.queue().front();
  EXPECT_EQ(event.name, u"sign_in_failed"_s);
  EXPECT_EQ(event.props, (QJsonObject{{u"reason"_s, u"network"_s}}));
  EXPECT_EQ(event.at, u"2026-03-14T01:02:03Z"_s);
  EXPECT_EQ(event.eventClass, EventClass::Optional);
}

TEST_F(TelemetryTest, WithSharingOffOptionalEventsNeverEnterTheQueueAndEssentialOnesDo) {
  settings.set(keys::shareUsageStatistics, false);
  telemetry.track(u"dictation_started"_s);
  telemetry.track(u"dictation_failed"_s, {}, EventClass::Essential);
  EXPECT_EQ(queuedNames(), QStringList{u"dictation_failed"_s});
}

TEST_F(TelemetryTest, SharingIsOnWhenTheSettingIsMissingOrOfAnotherType) {
  telemetry.track(u"one"_s);
  settings.set(keys::String{u"shareUsageStatistics"}, u"false"_s);
  telemetry.track(u"two"_s);
  settings.set(keys::shareUsageStatistics, true);
  telemetry.track(u"three"_s);
  EXPECT_THAT(telemetry.queue(), SizeIs(3));
}

TEST_F(TelemetryTest, TheQueueHoldsTheNewestTwoHundredEvents) {
  for (int number = 1; number <= 200; ++number) telemetry.track(QString::number(number));
  EXPECT_THAT(telemetry.queue(), SizeIs(200));
  EXPECT_EQ(telemetry.queue().front().name, u"1"_s);
  telemetry.track(u"201"_s);
  EXPECT_THAT(telemetry.queue(), SizeIs(200));
  EXPECT_EQ(telemetry.queue().front().name, u"2"_s);
  EXPECT_EQ(telemetry.queue().back().name, u"201"_s);
}

TEST_F(TelemetryTest, TheFirstDictationIsToldOnceWithTheSecondsSinceTheFirstLaunch) {
  clock.advance(90s + 900ms);
  telemetry.recordFirstDictation();
  telemetry.recordFirstDictation();
  ASSERT_EQ(queuedNames(), QStringList{u"first_dictation"_s});
  EXPECT_EQ(telemetry.queue().front().props, (QJsonObject{{u"secondsSinceFirstLaunch"_s, 90}}));
}

TEST_F(TelemetryTest, WithoutATimeOfFirstLaunchTheSecondsAreZero) {
  settings.remove(keys::telemetryFirstLaunchAt);
  telemetry.recordFirstDictation();
  EXPECT_EQ(telemetry.queue().front().props, (QJsonObject{{u"secondsSinceFirstLaunch"_s, 0}}));
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
      telemetry.queue().front().props,
      (QJsonObject{{u"endpoint"_s, u"dictate"_s}, {u"error"_s, u"url_-1001"_s}, {u"ms"_s, 6000}}));
  EXPECT_EQ(telemetry.queue().front().eventClass, EventClass::Essential);
}

TEST_F(TelemetryTest, AnErrorGoesBeforeAStatus) {
  report(500, 1ms, HttpError{UrlError::NetworkConnectionLost, {}});
  EXPECT_EQ(telemetry.queue().front().props.value(u"error"), u"url_-1005"_s);
  EXPECT_FALSE(telemetry.queue().front().props.contains(u"status"_s));
}

TEST_F(TelemetryTest, AStatusFrom400OnIsARequestFailedExcept401) {
  for (const int status : {399, 400, 401, 402, 500}) report(status, 1ms);
  ASSERT_EQ(queuedNames(), QStringList(3, u"request_failed"_s));
  EXPECT_EQ(telemetry.queue().front().props,
            (QJsonObject{{u"endpoint"_s, u"dictate"_s}, {u"status"_s, 400}, {u"ms"_s, 1}}));
  EXPECT_EQ(telemetry.queue()[1].props.value(u"status"), 402);
  EXPECT_EQ(telemetry.queue()[2].props.value(u"status"), 500);
}

TEST_F(TelemetryTest, ARequestIsSlowFrom5000MillisecondsOn) {
  report(200, 4999ms);
  EXPECT_THAT(telemetry.queue(), IsEmpty());
  report(200, 5000ms);
  ASSERT_EQ(queuedNames(), QStringList{u"request_slow"_s});
  EXPECT_EQ(telemetry.queue().front().props,
            (QJsonObject{{u"endpoint"_s, u"dictate"_s}, {u"ms"_s, 5000}}));
  EXPECT_EQ(telemetry.queue().front().eventClass, EventClass::Essential);
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
