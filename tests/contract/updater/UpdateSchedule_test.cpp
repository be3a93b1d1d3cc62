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

}  // namespace
}  // namespace vemo
