// The tap: installed, removed, interrupted.

#include "desktop/HotkeyManager.h"

#include <memory>

#include "desktop/HotkeyFixture.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class HotkeyManagerTest : public HotkeyFixture {};

TEST_F(HotkeyManagerTest, InstallingTwiceStartsTheSourceOnce) {
  EXPECT_TRUE(hotkey.installTap());
  EXPECT_TRUE(hotkey.isTapEnabled());
  EXPECT_EQ(source.startCount, 1);
  EXPECT_EQ(storage.logMessages().filter(u"HotkeyManager: event tap installed"_s).size(), 1);
}

TEST_F(HotkeyManagerTest, ASourceThatCannotBeStartedIsLoggedAndTriedAgainAtTheNextInstall) {
  hotkey.removeTap();
  source.canStart = false;
  EXPECT_FALSE(hotkey.installTap());
  EXPECT_FALSE(hotkey.isTapEnabled());
  EXPECT_TRUE(
      storage.hasLogged(u"HotkeyManager: tapCreate FAILED — Accessibility not granted for this "
                        "app binary"_s));
  source.canStart = true;
  EXPECT_TRUE(hotkey.installTap());
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyManagerTest, RemovingTheTapDuringAHoldFiresNoUpAndForgetsTheHold) {
  flags(kRightOption, OptionFlag);
  takeCalls();
  hotkey.removeTap();
  EXPECT_FALSE(source.isStarted());
  EXPECT_FALSE(hotkey.isTapEnabled());
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
  hotkey.installTap();
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyManagerTest, RemovingTheTapEndsAPendingHoldOfLeftOption) {
  flags(kLeftOption, OptionFlag);
  clock.advance(100ms);
  hotkey.removeTap();
  clock.advance(1h);
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0u);
}

TEST_F(HotkeyManagerTest, RemovingTheTapForgetsAToggleThatIsDown) {
  flags(kFnKey, FnFlag);
  hotkey.removeTap();
  hotkey.installTap();
  clock.advance(1s);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle", "toggle"));
}

TEST_F(HotkeyManagerTest, WhileSilentNoKeyTriggersAnything) {
  hotkey.setSilent(true);
  EXPECT_TRUE(hotkey.isSilent());
  EXPECT_TRUE(hotkey.isTapEnabled());
  flags(kRightOption, OptionFlag);
  flags(kRightOption, 0);
  flags(kFnKey, FnFlag);
  flags(kFnKey, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
  hotkey.setSilent(false);
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyManagerTest, BecomingSilentEndsAHoldWithItsCallbackOnce) {
  flags(kRightOption, OptionFlag);
  takeCalls();
  hotkey.setSilent(true);
  hotkey.setSilent(true);
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

TEST_F(HotkeyManagerTest, BecomingSilentEndsAPendingHoldOfLeftOption) {
  flags(kLeftOption, OptionFlag);
  clock.advance(100ms);
  hotkey.setSilent(true);
  clock.advance(1h);
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0u);
}

TEST_F(HotkeyManagerTest, AToggleKeyThatWentUpWhileSilentTriggersAtItsNextPress) {
  flags(kFnKey, FnFlag);
  hotkey.setSilent(true);
  flags(kFnKey, 0);
  hotkey.setSilent(false);
  clock.advance(1s);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle", "toggle"));
}

TEST_F(HotkeyManagerTest, ANewTapIsStillSilent) {
  hotkey.setSilent(true);
  hotkey.removeTap();
  hotkey.installTap();
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyManagerTest, AnInterruptionDuringAHoldForcesOneUpAndKeepsTheTap) {
  flags(kRightOption, OptionFlag);
  takeCalls();
  source.interrupt();
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
  EXPECT_TRUE(
      storage.hasLogged(u"HotkeyManager: tap re-enabled with lost key-up — forcing PTT release"_s));
  EXPECT_TRUE(hotkey.isTapEnabled());
  source.interrupt();
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyManagerTest, AnInterruptionWithNothingHeldCallsAndLogsNothing) {
  source.interrupt();
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_THAT(storage.logMessages().filter(u"lost key-up"_s), IsEmpty());
}

TEST_F(HotkeyManagerTest, AnInterruptionForgetsAToggleThatIsDown) {
  flags(kFnKey, FnFlag);
  source.interrupt();
  clock.advance(1s);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle", "toggle"));
}

TEST_F(HotkeyManagerTest, AManagerThatIsGoneCallsNothingThatWasUnderWay) {
  FakeKeyEventSource itsSource;
  auto manager = std::make_unique<HotkeyManager>(itsSource, loneModifier, clock, mainThread,
                                                 storage.settings, storage.debugLog);
  int calls = 0;
  manager->onPushToTalkDown = [&] { ++calls; };
  manager->onToggleTrigger = [&] { ++calls; };
  manager->installTap();
  itsSource.send({KeyEvent::Type::FlagsChanged, kLeftOption, OptionFlag});
  itsSource.send({KeyEvent::Type::FlagsChanged, kFnKey, FnFlag | OptionFlag});
  manager.reset();
  EXPECT_FALSE(itsSource.isStarted());
  clock.advance(1s);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace vemo
