// What a launch tells: crashes, an update, the launch itself.
#include "TelemetryFixture.h"

namespace vemo {
namespace {

using testing::SizeIs;

class TelemetryLaunchTest : public TelemetryFixture {
 protected:
  void launch(bool atLogin = false) {
    with.http.answer(installPath, 200);
    telemetry.start(atLogin);
    settle();
  }
};

TEST_F(TelemetryLaunchTest, ALaunchTellsWhetherItWasAtLogin) {
  launch(true);
  ASSERT_EQ(queuedNames(), QStringList{u"app_launched"_s});
  EXPECT_EQ(queued(0).props(), (QJsonObject{{u"launchedAtLogin"_s, true}}));
}

TEST_F(TelemetryLaunchTest, TheFirstLaunchEverIsNoUpdateAndRemembersItsBuild) {
  launch();
  EXPECT_EQ(queuedNames(), QStringList{u"app_launched"_s});
  EXPECT_EQ(settings.get(keys::telemetryLastLaunchedBuild), u"34"_s);
}

TEST_F(TelemetryLaunchTest, TheSameBuildAsLastTimeIsNoUpdate) {
  settings.set(keys::telemetryLastLaunchedBuild, u"34"_s);
  launch();
  EXPECT_EQ(queuedNames(), QStringList{u"app_launched"_s});
}

TEST_F(TelemetryLaunchTest, AnotherBuildThanLastTimeIsAnUpdateToldBeforeTheLaunch) {
  settings.set(keys::telemetryLastLaunchedBuild, u"33"_s);
  launch();
  ASSERT_EQ(queuedNames(), (QStringList{u"update_installed"_s, u"app_launched"_s}));
  EXPECT_EQ(queued(0).props(), (QJsonObject{{u"version"_s, u"1.2.0 (34)"_s}, {u"build"_s, 34}}));
  EXPECT_EQ(queued(0).eventClass(), EventClass::Essential);
  EXPECT_EQ(settings.get(keys::telemetryLastLaunchedBuild), u"34"_s);
}

TEST_F(TelemetryLaunchTest, ABuildThatIsNoNumberIsZero) {
  settings.set(keys::telemetryLastLaunchedBuild, u"33"_s);
  with.system.applicationBuild = u"34b"_s;
  launch();
  EXPECT_EQ(queued(0).props().value(u"build"), 0);
}

TEST_F(TelemetryLaunchTest, WithoutABuildNothingIsComparedOrRemembered) {
  settings.set(keys::telemetryLastLaunchedBuild, u"33"_s);
  with.system.applicationBuild.clear();
  launch();
  EXPECT_EQ(queuedNames(), QStringList{u"app_launched"_s});
  EXPECT_EQ(settings.get(keys::telemetryLastLaunchedBuild), u"33"_s);
}

TEST_F(TelemetryLaunchTest, ACrashIsToldWithWhatIsKnownOfIt) {
  launch();
  with.crashes.deliver({{.applicationBuildVersion = u"1.1.0 build/33 (old)"_s,
                         .exceptionType = 1,
                         .exceptionCode = 2,
                         .signal = 11,
                         .terminationReason = u"because; of 'this'"_s}});
  settle();
  ASSERT_EQ(queuedNames(), (QStringList{u"app_launched"_s, u"app_crashed"_s}));
  EXPECT_EQ(queued(1).props(), (QJsonObject{{u"appVersion"_s, u"1.1.0_build/33__old_"_s},
                                            {u"exceptionType"_s, 1},
                                            {u"exceptionCode"_s, 2},
                                            {u"signal"_s, 11},
                                            {u"terminationReason"_s, u"because__of__this_"_s}}));
  EXPECT_EQ(queued(1).eventClass(), EventClass::Essential);
}

TEST_F(TelemetryLaunchTest, ADiagnosticWithNoSignalHasNoSignalKey) {
  launch();
  with.crashes.deliver({{.applicationBuildVersion = u"34"_s,
                         .exceptionType = {},
                         .exceptionCode = {},
                         .signal = {},
                         .terminationReason = {}}});
  settle();
  EXPECT_EQ(queued(1).props(), (QJsonObject{{u"appVersion"_s, u"34"_s}}));
}

TEST_F(TelemetryLaunchTest, APayloadWithTwelveCrashesGivesTenEvents) {
  launch();
  with.crashes.deliver(CrashDiagnostics::Payload(12));
  settle();
  EXPECT_THAT(telemetry.queue(), SizeIs(1 + 10));
}

TEST_F(TelemetryLaunchTest, ACrashIsTrackedOnTheMainThreadLater) {
  launch();
  with.crashes.deliver(CrashDiagnostics::Payload(1));
  EXPECT_THAT(telemetry.queue(), SizeIs(1));
  settle();
  EXPECT_THAT(telemetry.queue(), SizeIs(2));
}

}  // namespace
}  // namespace vemo
