// Push-to-talk: which keys press it, and what lets it go.

#include "desktop/HotkeyChoices.h"
#include "desktop/HotkeyFixture.h"
#include "desktop/ShortcutCapture.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class HotkeyPushToTalkTest : public HotkeyFixture {};

// Left Option

TEST_F(HotkeyPushToTalkTest, LeftOptionLetGoWithin200msCallsNothing) {
  flags(kLeftOption, OptionFlag);
  clock.advance(199ms);
  flags(kLeftOption, 0);
  clock.advance(1h);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyPushToTalkTest, LeftOptionHeldFor250msPressesOnceAndItsReleaseReleases) {
  flags(kLeftOption, OptionFlag);
  clock.advance(250ms);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  clock.advance(1h);
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kLeftOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
  EXPECT_TRUE(storage.hasLogged(u"HotkeyManager: Left Option PTT DOWN (held)"_s));
  EXPECT_TRUE(storage.hasLogged(u"HotkeyManager: Left Option PTT UP"_s));
}

TEST_F(HotkeyPushToTalkTest, LeftOptionPressesAtExactly200ms) {
  flags(kLeftOption, OptionFlag);
  clock.advance(200ms - 1ns);
  EXPECT_THAT(takeCalls(), IsEmpty());
  clock.advance(1ns);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyPushToTalkTest, LeftOptionThenShiftWithin200msCallsNothingAndNothingRetries) {
  flags(kLeftOption, OptionFlag);
  clock.advance(100ms);
  flags(kLeftShift, OptionFlag | ShiftFlag);
  clock.advance(100ms);
  flags(kLeftShift, OptionFlag);
  clock.advance(1h);
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kLeftOption, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyPushToTalkTest, AShiftThatCameAndWentWithin200msDoesNotEndTheHold) {
  flags(kLeftOption, OptionFlag);
  flags(kLeftShift, OptionFlag | ShiftFlag);
  flags(kLeftShift, OptionFlag);
  clock.advance(200ms);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyPushToTalkTest, EachOtherModifierHeldAtTheEndOfTheHoldMakesItACombination) {
  for (const ModifierFlags other : {ShiftFlag, ControlFlag, CommandFlag}) {
    flags(kLeftOption, OptionFlag);
    source.missEventsUpTo(OptionFlag | other);
    clock.advance(200ms);
    EXPECT_THAT(takeCalls(), IsEmpty()) << other;
    flags(kLeftOption, 0);
  }
}

TEST_F(HotkeyPushToTalkTest, LeftOptionAfterAnotherModifierBeginsNoHold) {
  flags(kLeftControl, ControlFlag);
  flags(kLeftOption, ControlFlag | OptionFlag);
  clock.advance(1s);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyPushToTalkTest, ASecondPressOfLeftOptionBeginsItsHoldAnew) {
  flags(kLeftOption, OptionFlag);
  clock.advance(150ms);
  flags(kLeftOption, OptionFlag);
  clock.advance(199ms);
  EXPECT_THAT(takeCalls(), IsEmpty());
  clock.advance(1ms);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyPushToTalkTest, LettersTypedWithLeftOptionHeldDoNotEndItsHold) {
  flags(kLeftOption, OptionFlag);
  keyDown(0, OptionFlag);
  keyUp(0, OptionFlag);
  clock.advance(200ms);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(HotkeyPushToTalkTest, TheChoiceLeftOptionHasTheHoldAndNeverLooksAtTheRightSide) {
  choose(u"leftOption"_s);
  flags(kRightOption, OptionFlag);
  clock.advance(1s);
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kLeftOption, OptionFlag);
  clock.advance(199ms);
  EXPECT_THAT(takeCalls(), IsEmpty());
  clock.advance(1ms);
  flags(kLeftOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("down", "up"));
}

TEST_F(HotkeyPushToTalkTest, ACapturedLeftOptionHasTheHoldAndACapturedLeftCommandHasNone) {
  const auto capture = [&](const KeyEvent& event) {
    ShortcutCapture capture;
    capture.handle(event);
    saveShortcut(storage.settings, HotkeyTrigger::PushToTalk, *capture.confirm());
  };
  capture({KeyEvent::Type::FlagsChanged, kLeftOption, OptionFlag});
  EXPECT_EQ(storage.settings.get(keys::pushToTalkHotkeyChoice), u"leftOption"_s);
  flags(kLeftOption, OptionFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
  clock.advance(200ms);
  flags(kLeftOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("down", "up"));

  capture({KeyEvent::Type::FlagsChanged, kLeftCommand, CommandFlag});
  EXPECT_EQ(storage.settings.get(keys::pushToTalkHotkeyChoice), u"custom"_s);
  flags(kLeftCommand, CommandFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

// Right Option

TEST_F(HotkeyPushToTalkTest, RightOptionActsAtOnce) {
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

TEST_F(HotkeyPushToTalkTest, RightOptionWithAnotherModifierDoesNotPress) {
  for (const ModifierFlags other : {ShiftFlag, ControlFlag, CommandFlag}) {
    flags(kRightOption, OptionFlag | other);
    EXPECT_THAT(takeCalls(), IsEmpty());
  }
}

TEST_F(HotkeyPushToTalkTest, RightOptionPressedWhileLeftIsDownIsReleasedOnlyWhenOptionIsGone) {
  flags(kLeftOption, OptionFlag);
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kRightOption, OptionFlag);
  clock.advance(1s);
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kLeftOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

TEST_F(HotkeyPushToTalkTest, BothOptionsTappedTogetherPressAndReleaseAndNoHoldFollows) {
  flags(kLeftOption, OptionFlag);
  flags(kRightOption, OptionFlag);
  flags(kLeftOption, OptionFlag);
  flags(kRightOption, 0);
  clock.advance(1h);
  EXPECT_THAT(takeCalls(), ElementsAre("down", "up"));
}

TEST_F(HotkeyPushToTalkTest, AModifierLetGoBeforeItsOtherSideIsReleasedWhenThatComesUpToo) {
  for (const ModifierKey& key : modifierKeys) {
    for (const ModifierKey& other : modifierKeys) {
      if (other.flag != key.flag || other.keyCode == key.keyCode) continue;
      choosePushToTalk(
          {.keyCode = key.keyCode, .modifierFlagsRaw = key.flag, .isModifierOnly = true});
      flags(key.keyCode, key.flag);
      flags(other.keyCode, key.flag);
      flags(key.keyCode, key.flag);
      EXPECT_THAT(takeCalls(), ElementsAre("down")) << key.keyCode;
      flags(other.keyCode, 0);
      EXPECT_THAT(takeCalls(), ElementsAre("up")) << key.keyCode;
    }
  }
  choose(u"leftOption"_s);
  flags(kLeftOption, OptionFlag);
  clock.advance(200ms);
  flags(kRightOption, OptionFlag);
  flags(kLeftOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

TEST_F(HotkeyPushToTalkTest, OtherKeysDoNothingToEitherOption) {
  flags(kRightOption, OptionFlag);
  keyDown(0, OptionFlag);
  keyUp(0, OptionFlag);
  flags(kLeftShift, OptionFlag | ShiftFlag);
  flags(kLeftShift, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

// Other modifiers

TEST_F(HotkeyPushToTalkTest, EachModifierKeyPressesAloneAndReleasesWithItsFlagOrBesideAnother) {
  for (const ModifierKey& key : modifierKeys) {
    choosePushToTalk(
        {.keyCode = key.keyCode, .modifierFlagsRaw = key.flag, .isModifierOnly = true});
    flags(key.keyCode, key.flag);
    EXPECT_THAT(takeCalls(), ElementsAre("down")) << key.keyCode;
    flags(key.keyCode, key.flag);
    keyUp(key.keyCode, 0);
    EXPECT_THAT(takeCalls(), IsEmpty()) << key.keyCode;
    flags(key.keyCode, 0);
    EXPECT_THAT(takeCalls(), ElementsAre("up")) << key.keyCode;
    for (const ModifierKey& other : modifierKeys) {
      if (other.flag == key.flag) continue;
      flags(key.keyCode, key.flag);
      flags(other.keyCode, key.flag | other.flag);
      EXPECT_THAT(takeCalls(), ElementsAre("down")) << "an event of another key isn't looked at";
      flags(key.keyCode, key.flag | other.flag);
      EXPECT_THAT(takeCalls(), ElementsAre("up")) << key.keyCode << " with " << other.keyCode;
    }
  }
}

TEST_F(HotkeyPushToTalkTest, CapsLockIsNotServed) {
  choosePushToTalk({.keyCode = 57, .isModifierOnly = true});
  flags(57, 0x10000);
  flags(57, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyPushToTalkTest, FnPressesAndReleasesWithItsFlag) {
  choose(u"fnGlobe"_s, u"controlSpace"_s);
  flags(kFnKey, FnFlag);
  flags(kFnKey, FnFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kFnKey, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

TEST_F(HotkeyPushToTalkTest, TheFnFlagOfAnyFlagsEventCorrectsAStateThatWentAstray) {
  choose(u"fnGlobe"_s, u"controlSpace"_s);
  flags(kLeftShift, FnFlag | ShiftFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kLeftShift, FnFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
  flags(kLeftControl, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
  keyDown(kSpace, FnFlag);
  EXPECT_THAT(takeCalls(), IsEmpty()) << "key events aren't flags events";
}

// Chords

TEST_F(HotkeyPushToTalkTest, ControlLetGoBeforeSpaceReleasesAndTheKeyUpOfSpaceDoesNothing) {
  choose(u"controlSpace"_s);
  flags(kLeftControl, ControlFlag);
  keyDown(kSpace, ControlFlag);
  keyDown(kSpace, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kLeftControl, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
  keyUp(kSpace, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyPushToTalkTest, SpaceLetGoBeforeControlReleases) {
  choose(u"controlSpace"_s);
  keyDown(kSpace, ControlFlag);
  keyUp(kSpace, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down", "up"));
  flags(kLeftControl, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(HotkeyPushToTalkTest, AChordPressesWithExactlyItsModifiersAndASecondOneReleasesIt) {
  choose(u"controlSpace"_s);
  keyDown(kSpace, 0);
  keyDown(kSpace, ControlFlag | ShiftFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
  keyDown(kSpace, ControlFlag);
  keyDown(0, ControlFlag);
  keyUp(0, ControlFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  flags(kLeftShift, ControlFlag | ShiftFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

TEST_F(HotkeyPushToTalkTest, APlainKeyIsHeldWhateverModifiersComeAndGo) {
  choosePushToTalk({.keyCode = 96});
  keyDown(96, ShiftFlag);
  EXPECT_THAT(takeCalls(), IsEmpty());
  keyDown(96);
  flags(kLeftShift, ShiftFlag);
  flags(kLeftShift, 0);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
  keyUp(96, ShiftFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("up"));
}

// Company for a bare modifier

TEST_F(HotkeyPushToTalkTest, ABareOptionIsGivenCompanyOnceAHoldBeforeTheCallbackRuns) {
  flags(kRightOption, OptionFlag);
  EXPECT_EQ(loneModifier.accompanyCount, 1);
  flags(kRightOption, OptionFlag);
  flags(kRightOption, 0);
  EXPECT_EQ(loneModifier.accompanyCount, 1);
}

TEST_F(HotkeyPushToTalkTest, LeftOptionIsGivenCompanyWhenItsHoldHasLastedAndNotBefore) {
  flags(kLeftOption, OptionFlag);
  clock.advance(199ms);
  EXPECT_EQ(loneModifier.accompanyCount, 0);
  clock.advance(1ms);
  EXPECT_EQ(loneModifier.accompanyCount, 1);
}

TEST_F(HotkeyPushToTalkTest, OnlyOptionAndCommandNeedCompany) {
  for (const ModifierKey& key : modifierKeys) {
    choosePushToTalk(
        {.keyCode = key.keyCode, .modifierFlagsRaw = key.flag, .isModifierOnly = true});
    loneModifier.accompanyCount = 0;
    flags(key.keyCode, key.flag);
    flags(key.keyCode, 0);
    EXPECT_EQ(loneModifier.accompanyCount, key.flag == OptionFlag || key.flag == CommandFlag);
  }
  choose(u"fnGlobe"_s, u"controlSpace"_s);
  loneModifier.accompanyCount = 0;
  flags(kFnKey, FnFlag);
  choose(u"optionSpace"_s);
  keyDown(kSpace, OptionFlag);
  EXPECT_EQ(loneModifier.accompanyCount, 0);
}

}  // namespace
}  // namespace vemo
