// When an updater looks for updates by itself.
#include "UpdaterFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;

class UpdateScheduleTest : public UpdaterFixture {
 protected:
  UpdateScheduleTest() {
    publish({});
    start();
  }

  /// Whether the hour that passes brings a check, which is awaited.
  bool checksWithinAnHour() {
    const int finished = delegate.finished;
    clock.advance(1h);
    if (updater->canCheckForUpdates()) return false;
    return loop.runUntil([&] { return delegate.finished > finished; });
  }
};

TEST_F(UpdateScheduleTest, WhoHasNeverCheckedChecksWithinTheHour) {
  EXPECT_TRUE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, ADayAfterTheLastCheckComesTheNextAndNoneBefore) {
  check();
  clock.advance(22h);
  EXPECT_FALSE(checksWithinAnHour());
  EXPECT_TRUE(checksWithinAnHour());
  EXPECT_FALSE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, WhatHasFailedIsTriedAgainTheNextDay) {
  server.files.remove("appcast.xml");
  EXPECT_THAT(check(), ElementsAre(2001));
  clock.advance(22h);
  EXPECT_FALSE(checksWithinAnHour());
  EXPECT_TRUE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, HoursInWhichTheMachineSleptCount) {
  check();
  const auto checked = clock.wallTime();
  clock.setWallTime(checked + 23h - 1s);
  EXPECT_FALSE(checksWithinAnHour());
  clock.setWallTime(checked + 23h);
  EXPECT_TRUE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, AfterTheClockWasSetBackACheckComesAtOnce) {
  check();
  clock.setWallTime(clock.wallTime() - 2h);
  EXPECT_TRUE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, WhoWantsNoChecksGetsNone) {
  updater->setAutomaticallyChecksForUpdates(false);
  EXPECT_FALSE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, TheCheckOfAnotherSessionCounts) {
  SelfUpdater other(with(), delegate, delegate);
  other.checkForUpdatesInBackground();
  EXPECT_TRUE(loop.runUntil([&] { return delegate.finished == 1; }));
  EXPECT_FALSE(checksWithinAnHour());
}

TEST_F(UpdateScheduleTest, WhatIsReadyHereIsLookedAfterWhateverOthersCheck) {
  publish({release(2, "1.1.0")});
  check();
  clock.advance(22h);
  SelfUpdater other(with(), delegate, delegate);
  other.checkForUpdatesInBackground();
  EXPECT_TRUE(loop.runUntil([&] { return delegate.finished == 2; }));
  EXPECT_FALSE(checksWithinAnHour());
  publish({}, 2);
  EXPECT_TRUE(checksWithinAnHour());
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0") << "it was withdrawn";
}

}  // namespace
}  // namespace vemo
