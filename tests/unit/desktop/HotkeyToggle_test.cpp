// The toggle: what counts as a press of its shortcut, once a press, not too often.

#include "desktop/HotkeyFixture.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kCapsLock = 57;
constexpr std::int64_t kF5 = 96;

class HotkeyToggleTest : public HotkeyFixture {
 protected:
  /// Fn, the default, goes down and up.
  void tapFn() {
    flags(kFnKey, FnFlag);
    flags(kFnKey, 0);
  }
};

TEST_F(HotkeyToggleTest, FnTriggersWhenItGoesDownAndNotWhenItComesUp) {
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  flags(kFnKey, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
  EXPECT_TRUE(storage.hasLogged(u"HotkeyManager: Toggle Triggered (Fn / Globe)"_s));
}

TEST_F(HotkeyToggleTest, ACallbackComesInATurnOfItsOwn) {
  bool called = false;
  hotkey.onToggleTrigger = [&] { called = true; };
  flags(kFnKey, FnFlag);
  EXPECT_FALSE(called);
  mainThread.drain();
  EXPECT_TRUE(called);
}

TEST_F(HotkeyToggleTest, ATriggerThatNobodyListensToIsHarmless) {
  hotkey.onToggleTrigger = nullptr;
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyToggleTest, OfTwoTaps300msApartTheSecondIsDroppedAndTheTimeOfTheFirstStays) {
  tapFn();
  clock.advance(300ms);
  tapFn();
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  // 351 ms after the first tap, 51 ms after the dropped one.
  clock.advance(51ms);
  tapFn();
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, TheDebounceIsStrictAtExactly350ms) {
  tapFn();
  clock.advance(350ms);
  tapFn();
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  clock.advance(1ns);
  tapFn();
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, APressThatTheDebounceDroppedDoesNotReachPushToTalkEither) {
  choose(u"fnGlobe"_s, u"fnGlobe"_s);
  tapFn();
  clock.advance(300ms);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, OneKeyForBothTriggersGivesThePressToTheToggle) {
  choose(u"rightOption"_s, u"rightOption"_s);
  flags(kRightOption, OptionFlag);
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, AFlagsEventOfAnotherKeyWithoutFnEndsAPressWhoseKeyUpWasLost) {
  flags(kFnKey, FnFlag);
  flags(kLeftShift, ShiftFlag);
  clock.advance(1s);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle", "toggle"));
}

TEST_F(HotkeyToggleTest, AFlagsEventOfAnotherKeyWithFnStillHeldEndsNoPress) {
  flags(kFnKey, FnFlag);
  flags(kLeftShift, FnFlag | ShiftFlag);
  clock.advance(1s);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, ControlSpaceTriggersOnceHoweverLongSpaceRepeats) {
  choose({}, u"controlSpace"_s);
  flags(kLeftControl, ControlFlag);
  for (int i = 0; i < 20; ++i) {
    keyDown(kSpace, ControlFlag);
    clock.advance(100ms);
  }
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  keyUp(kSpace, ControlFlag);
  keyDown(kSpace, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, ControlSpaceWithShiftAlsoDownDoesNotTrigger) {
  choose({}, u"controlSpace"_s);
  keyDown(kSpace, ControlFlag | ShiftFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
  // A blocked press changes nothing: without Shift the next one is an edge.
  keyDown(kSpace, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, FlagsOutsideTheFourModifiersDoNotBlockAChord) {
  choose({}, u"controlSpace"_s);
  keyDown(kSpace, ControlFlag | FnFlag | 0x10000);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, AKeyUpOfAnyOtherKeyEndsThePressOfAChord) {
  choose({}, u"controlSpace"_s);
  keyDown(kSpace, ControlFlag);
  clock.advance(1s);
  keyUp(0, ControlFlag);
  keyDown(kSpace, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle", "toggle"));
}

TEST_F(HotkeyToggleTest, KeyDownsOfOtherKeysAndModifiersLeaveThePressOfAChordAlone) {
  choose({}, u"controlSpace"_s);
  keyDown(kSpace, ControlFlag);
  clock.advance(1s);
  keyDown(0, ControlFlag);
  flags(kLeftControl, 0);
  keyDown(kSpace, 0);
  keyDown(kSpace, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, APlainKeyTriggersOnlyWithoutAnyModifier) {
  chooseToggle({.keyCode = kF5});
  for (const ModifierFlags held : {ShiftFlag, ControlFlag, OptionFlag, CommandFlag}) {
    keyDown(kF5, held);
    keyUp(kF5, held);
  }
  EXPECT_THAT(takeCalls(), IsEmpty());
  keyDown(kF5);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, EachModifierKeyTriggersWhenItIsHeldAlone) {
  choose(u"fnGlobe"_s);
  for (const ModifierKey& key : modifierKeys) {
    chooseToggle({.keyCode = key.keyCode, .modifierFlagsRaw = key.flag, .isModifierOnly = true});
    for (const ModifierKey& other : modifierKeys) {
      if (other.flag == key.flag) continue;
      flags(key.keyCode, key.flag | other.flag);
      EXPECT_THAT(takeCalls(), IsEmpty()) << key.keyCode << " with " << other.keyCode;
    }
    keyDown(key.keyCode, key.flag);
    keyUp(key.keyCode, key.flag);
    EXPECT_THAT(takeCalls(), IsEmpty()) << "only flags events tell of modifiers";
    flags(key.keyCode, key.flag);
    EXPECT_THAT(takeCalls(), ElementsAre("toggle")) << key.keyCode;
    flags(key.keyCode, key.flag);
    EXPECT_THAT(takeCalls(), IsEmpty()) << key.keyCode;
    flags(key.keyCode, 0);
    clock.advance(1s);
    takeCalls();
  }
}

TEST_F(HotkeyToggleTest, ASecondModifierEndsThePressOfAModifierOnlyAtAnEventOfItsOwnKey) {
  choose(u"controlSpace"_s, u"rightCommand"_s);
  flags(kRightCommand, CommandFlag);
  flags(kLeftShift, CommandFlag | ShiftFlag);
  clock.advance(1s);
  flags(kRightCommand, CommandFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  flags(kRightCommand, CommandFlag | ShiftFlag);
  flags(kRightCommand, CommandFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

TEST_F(HotkeyToggleTest, AModifierKeyWithoutAFlagOfItsOwnIsPressedAtItsFirstEvent) {
  chooseToggle({.keyCode = kCapsLock, .isModifierOnly = true});
  flags(kCapsLock, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  clock.advance(1s);
  flags(kCapsLock, 0);
  EXPECT_THAT(takeCalls(), IsEmpty()) << "nothing tells that it came up";
}

TEST_F(HotkeyToggleTest, EitherOptionTriggersWithBothSidesAtOnce) {
  choose(u"controlSpace"_s, u"eitherOption"_s);
  flags(kLeftOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  flags(kLeftOption, 0);
  clock.advance(1s);
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
  flags(kLeftOption, OptionFlag);
  EXPECT_THAT(takeCalls(), IsEmpty()) << "the second side is no new press";
}

TEST_F(HotkeyToggleTest, EitherOptionIsLookedAtInFlagsEventsOfItsTwoKeysOnly) {
  choose(u"controlSpace"_s, u"eitherOption"_s);
  keyDown(kLeftOption, OptionFlag);
  flags(kLeftShift, OptionFlag);
  flags(kLeftOption, OptionFlag | ShiftFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kLeftOption, OptionFlag);
  flags(kLeftShift, 0);
  clock.advance(1s);
  flags(kLeftOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("toggle")) << "another key's event ends no press";
}

TEST_F(HotkeyToggleTest, ABareOptionIsGivenCompanyEvenWhenTheDebounceDropsItsPress) {
  choose(u"controlSpace"_s, u"rightOption"_s);
  flags(kRightOption, OptionFlag);
  flags(kRightOption, 0);
  EXPECT_EQ(loneModifier.accompanyCount, 1);
  flags(kRightOption, OptionFlag);
  EXPECT_EQ(loneModifier.accompanyCount, 2);
  choose({}, u"fnGlobe"_s);
  flags(kFnKey, FnFlag);
  EXPECT_EQ(loneModifier.accompanyCount, 2);
}

TEST_F(HotkeyToggleTest, ARecordWithoutAKeyNeverTriggers) {
  for (const bool isModifierOnly : {false, true}) {
    chooseToggle({.modifierFlagsRaw = ControlFlag, .isModifierOnly = isModifierOnly});
    keyDown(kSpace, ControlFlag);
    flags(kLeftControl, ControlFlag);
    keyUp(kSpace, ControlFlag);
    flags(kLeftControl, 0);
    EXPECT_THAT(takeCalls(), IsEmpty());
  }
}

TEST_F(HotkeyToggleTest, AChangeOfTheSettingCountsFromTheNextEvent) {
  choose({}, u"rightOption"_s);
  tapFn();
  EXPECT_THAT(takeCalls(), IsEmpty());
  choose(u"controlSpace"_s, u"fnGlobe"_s);
  tapFn();
  EXPECT_THAT(takeCalls(), ElementsAre("toggle"));
}

}  // namespace
}  // namespace vemo
