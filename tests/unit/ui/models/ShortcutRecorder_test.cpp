#include "ui/models/ShortcutRecorder.h"

#include <gmock/gmock.h>

#include <QVariantMap>

#include "ShortcutRecorderFixture.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// Opening and closing

TEST_F(ShortcutRecorderTest, NothingIsHeardBeforeItOpens) {
  expectClosed();
  EXPECT_EQ(keys.startCount, 0);
}

TEST_F(ShortcutRecorderTest, TheTextsAreThoseOfTheTarget) {
  recorder.openForPushToTalk();
  EXPECT_EQ(recorder.title(), u"Record Push-to-Talk Shortcut"_s);
  EXPECT_EQ(recorder.instruction(),
            u"Press any key, modifier, or combination to hold while speaking."_s);
  recorder.openForToggle();
  EXPECT_EQ(recorder.title(), u"Record Start / Stop Shortcut"_s);
  EXPECT_EQ(recorder.instruction(),
            u"Press any key, modifier, or combination to tap to start/stop."_s);
}

TEST_F(ShortcutRecorderTest, TheHotkeysAreSilentWhileItIsOpen) {
  recorder.openForPushToTalk();
  flags(kRightOption, OptionFlag);
  flags(kRightOption, 0);
  EXPECT_THAT(takeCalls(), IsEmpty());
  recorder.cancel();
  flags(kRightOption, OptionFlag);
  EXPECT_THAT(takeCalls(), ElementsAre("down"));
}

TEST_F(ShortcutRecorderTest, OpeningAgainForgetsWhatWasRecorded) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  recorder.openForToggle();
  EXPECT_TRUE(recorder.isOpen());
  EXPECT_EQ(recorder.target(), ShortcutTarget::Toggle);
  EXPECT_FALSE(recorder.hasRecorded());
}

TEST_F(ShortcutRecorderTest, CancellingSavesNothingAndRemovesTheMonitor) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  recorder.cancel();
  expectClosed();
  EXPECT_EQ(pushToTalk(), QString());
  EXPECT_TRUE(toasts.isEmpty());
}

TEST_F(ShortcutRecorderTest, EscAloneCancelsAndEmptiesWhatWasRecorded) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  EXPECT_EQ(keyDownInWindow(kEscape), Handling::Swallow);
  expectClosed();
  EXPECT_EQ(pushToTalk(), QString());
}

TEST_F(ShortcutRecorderTest, EscWithCommandHeldRecordsAChordAndDoesNotCancel) {
  recorder.openForToggle();
  EXPECT_EQ(keyDownInWindow(kEscape, CommandFlag), Handling::Swallow);
  EXPECT_TRUE(recorder.isOpen());
  EXPECT_EQ(recorder.recordedName(), u"Command + Esc"_s);
}

TEST_F(ShortcutRecorderTest, DestroyingItWhileOpenRemovesTheMonitorAndEndsTheSilence) {
  {
    ShortcutRecorder other{{.mainThread = mainThread,
                            .clock = clock,
                            .settings = storage.settings,
                            .hotkey = hotkey,
                            .keys = keys,
                            .showToast = [](const QString&) {}}};
    other.openForToggle();
  }
  EXPECT_FALSE(keys.isStarted());
  EXPECT_FALSE(hotkey.isSilent());
}

// What is recorded

TEST_F(ShortcutRecorderTest, OptionAloneRecordsItsSide) {
  recorder.openForPushToTalk();
  EXPECT_EQ(flagsInWindow(kLeftOption, OptionFlag), Handling::Swallow);
  EXPECT_EQ(recorder.recordedName(), u"Left Option (⌥)"_s);
  EXPECT_EQ(flagsInWindow(kRightOption, OptionFlag), Handling::Swallow);
  EXPECT_EQ(recorder.recordedName(), u"Right Option (⌥)"_s);
  EXPECT_EQ(recorder.recordedShortName(), u"Right ⌥"_s);
}

TEST_F(ShortcutRecorderTest, RightCommandRecordsItsPreset) {
  recorder.openForPushToTalk();
  EXPECT_EQ(flagsInWindow(kRightCommand, CommandFlag), Handling::Swallow);
  recorder.confirm();
  EXPECT_EQ(pushToTalk(), u"rightCommand"_s);
}

TEST_F(ShortcutRecorderTest, TheOtherModifiersRecordTheirKey) {
  const struct {
    std::int64_t keyCode;
    ModifierFlags flag;
    QString name;
  } rows[] = {
      {kLeftCommand, CommandFlag, u"Left Command (⌘)"_s},
      {kLeftShift, ShiftFlag, u"Left Shift (⇧)"_s},
      {kRightShift, ShiftFlag, u"Right Shift (⇧)"_s},
      {kLeftControl, ControlFlag, u"Left Control (⌃)"_s},
      {kRightControl, ControlFlag, u"Right Control (⌃)"_s},
  };
  for (const auto& row : rows) {
    recorder.openForToggle();
    EXPECT_EQ(flagsInWindow(row.keyCode, row.flag), Handling::Swallow);
    EXPECT_EQ(recorder.recordedName(), row.name);
    recorder.confirm();
    EXPECT_EQ(toggle(), u"custom"_s);
    EXPECT_EQ(toggleChoice(storage.settings),
              (CustomKeyShortcut{
                  .keyCode = row.keyCode, .modifierFlagsRaw = row.flag, .isModifierOnly = true}));
  }
}

TEST_F(ShortcutRecorderTest, FnIsRecordedAndPassedOn) {
  recorder.openForToggle();
  EXPECT_EQ(flagsInWindow(kFnKey, FnFlag), Handling::PassOn);
  EXPECT_EQ(recorder.recordedName(), u"Fn / Globe"_s);
}

TEST_F(ShortcutRecorderTest, CapsLockPassesOnAndRecordsNothing) {
  recorder.openForToggle();
  EXPECT_EQ(flagsInWindow(57, 0), Handling::PassOn);
  EXPECT_FALSE(recorder.hasRecorded());
}

TEST_F(ShortcutRecorderTest, AKeyWithoutModifiersIsRecordedAlone) {
  recorder.openForToggle();
  EXPECT_EQ(keyDownInWindow(kF8), Handling::Swallow);
  recorder.confirm();
  EXPECT_EQ(toggleChoice(storage.settings), (CustomKeyShortcut{.keyCode = kF8}));
}

TEST_F(ShortcutRecorderTest, SpaceWithExactlyOptionOrControlRecordsThePresetAndNoChord) {
  recorder.openForToggle();
  flagsInWindow(kLeftOption, OptionFlag);
  keyDownInWindow(kSpace, OptionFlag);
  recorder.confirm();
  EXPECT_EQ(toggle(), u"optionSpace"_s);
  recorder.openForToggle();
  flagsInWindow(kLeftControl, ControlFlag);
  keyDownInWindow(kSpace, ControlFlag);
  recorder.confirm();
  EXPECT_EQ(toggle(), u"controlSpace"_s);
  EXPECT_FALSE(storage.settings.contains(keys::customToggleShortcutData));
}

TEST_F(ShortcutRecorderTest, SpaceWithShiftRecordsAChord) {
  recorder.openForToggle();
  keyDownInWindow(kSpace, ShiftFlag);
  EXPECT_EQ(recorder.recordedName(), u"Shift + Space"_s);
  recorder.confirm();
  EXPECT_EQ(toggle(), u"custom"_s);
}

TEST_F(ShortcutRecorderTest, SpaceWithOptionAndShiftRecordsAChord) {
  recorder.openForToggle();
  keyDownInWindow(kSpace, OptionFlag | ShiftFlag);
  recorder.confirm();
  EXPECT_EQ(toggle(), u"custom"_s);
}

// Saving

TEST_F(ShortcutRecorderTest, ConfirmingBeforeAnythingIsRecordedLeavesItOpen) {
  recorder.openForPushToTalk();
  recorder.confirm();
  EXPECT_TRUE(recorder.isOpen());
  EXPECT_TRUE(toasts.isEmpty());
}

TEST_F(ShortcutRecorderTest, ARecordedChordIsSavedForItsTargetAlone) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8, ControlFlag | ShiftFlag);
  EXPECT_EQ(pushToTalk(), QString());
  recorder.confirm();
  expectClosed();
  EXPECT_EQ(pushToTalk(), u"custom"_s);
  EXPECT_EQ(pushToTalkChoice(storage.settings),
            (CustomKeyShortcut{.keyCode = kF8, .modifierFlagsRaw = ControlFlag | ShiftFlag}));
  EXPECT_EQ(toggle(), QString());
  EXPECT_THAT(toasts, ElementsAre(u"Push-to-Talk set to Control + Shift + F8"_s));
}

TEST_F(ShortcutRecorderTest, TheToggleIsConfirmedInItsOwnWords) {
  recorder.openForToggle();
  keyDownInWindow(kF8);
  recorder.confirm();
  EXPECT_THAT(toasts, ElementsAre(u"Start / Stop set to F8"_s));
}

TEST_F(ShortcutRecorderTest, ResettingAppliesTheDefaultOfTheTarget) {
  choose(u"rightOption"_s, u"controlSpace"_s);
  recorder.openForToggle();
  recorder.resetToDefault();
  expectClosed();
  EXPECT_EQ(toggle(), u"fnGlobe"_s);
  EXPECT_EQ(pushToTalk(), u"rightOption"_s);
  recorder.openForPushToTalk();
  recorder.resetToDefault();
  EXPECT_EQ(pushToTalk(), u"eitherOption"_s);
  EXPECT_THAT(toasts, ElementsAre(u"Start / Stop set to Fn / Globe"_s,
                                  u"Push-to-Talk set to Either Option (⌥)"_s));
}

TEST_F(ShortcutRecorderTest, EachQuickPresetAppliesItsChoiceAtOnce) {
  QStringList labels;
  for (const QVariant& row : recorder.quickPresets()) {
    const QString choice = row.toMap().value(u"choice"_s).toString();
    labels.append(row.toMap().value(u"label"_s).toString());
    recorder.openForPushToTalk();
    recorder.applyPreset(choice);
    expectClosed();
    EXPECT_EQ(pushToTalk(), choice);
  }
  EXPECT_THAT(labels, ElementsAre(u"Fn / Globe"_s, u"Either Option"_s, u"Right Option"_s,
                                  u"Control + Space"_s, u"Option + Space"_s));
}

TEST_F(ShortcutRecorderTest, APresetThatDoesNotExistChangesNothing) {
  recorder.openForPushToTalk();
  recorder.applyPreset(u"capsLock"_s);
  EXPECT_TRUE(recorder.isOpen());
  EXPECT_EQ(pushToTalk(), QString());
}

TEST_F(ShortcutRecorderTest, NothingIsSavedWhileItIsClosed) {
  recorder.confirm();
  recorder.resetToDefault();
  recorder.applyPreset(u"optionSpace"_s);
  EXPECT_EQ(pushToTalk(), QString());
  EXPECT_TRUE(toasts.isEmpty());
}

// Holding to confirm

TEST_F(ShortcutRecorderTest, HoldingAShortcutForTwoSecondsSavesIt) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  EXPECT_TRUE(recorder.isHeld());
  clock.advance(1999ms);
  EXPECT_TRUE(recorder.isOpen());
  clock.advance(1ms);
  expectClosed();
  EXPECT_EQ(pushToTalk(), u"custom"_s);
}

TEST_F(ShortcutRecorderTest, AShortcutThatIsLetGoIsNotSaved) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  clock.advance(1s);
  keyUpInWindow(kF8);
  EXPECT_FALSE(recorder.isHeld());
  clock.advance(1h);
  EXPECT_TRUE(recorder.isOpen());
  EXPECT_EQ(recorder.recordedName(), u"F8"_s);
}

TEST_F(ShortcutRecorderTest, TheHoldOfAChordBeginsWithItsLastKey) {
  recorder.openForPushToTalk();
  flagsInWindow(kLeftControl, ControlFlag);
  clock.advance(1500ms);
  keyDownInWindow(kSpace, ControlFlag);
  clock.advance(1500ms);
  EXPECT_TRUE(recorder.isOpen());
  clock.advance(500ms);
  EXPECT_EQ(pushToTalk(), u"controlSpace"_s);
}

TEST_F(ShortcutRecorderTest, AModifierThatComesUpIsNotHeld) {
  recorder.openForPushToTalk();
  flagsInWindow(kRightOption, OptionFlag);
  EXPECT_TRUE(recorder.isHeld());
  flagsInWindow(kRightOption, 0);
  EXPECT_FALSE(recorder.isHeld());
  flagsInWindow(kFnKey, FnFlag);
  EXPECT_TRUE(recorder.isHeld());
  flagsInWindow(kFnKey, 0);
  EXPECT_FALSE(recorder.isHeld());
}

TEST_F(ShortcutRecorderTest, AHoldEndsWithTheSheet) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  recorder.cancel();
  recorder.openForToggle();
  clock.advance(1h);
  EXPECT_TRUE(recorder.isOpen());
  EXPECT_EQ(pushToTalk(), QString());
  EXPECT_EQ(toggle(), QString());
}

}  // namespace
}  // namespace vemo
