#include "desktop/ShortcutCapture.h"

#include <gtest/gtest.h>

#include "desktop/HotkeyChoices.h"
#include "desktop/VirtualKeys.h"
#include "fakes/FakeClock.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using Handling = ShortcutCapture::Handling;

constexpr std::int64_t kF5 = 96;

class ShortcutCaptureTest : public testing::Test {
 protected:
  Handling flags(std::int64_t keyCode, ModifierFlags held) {
    return capture.handle({KeyEvent::Type::FlagsChanged, keyCode, held});
  }
  Handling keyDown(std::int64_t keyCode, ModifierFlags held = 0) {
    return capture.handle({KeyEvent::Type::KeyDown, keyCode, held});
  }
  Handling keyUp(std::int64_t keyCode, ModifierFlags held = 0) {
    return capture.handle({KeyEvent::Type::KeyUp, keyCode, held});
  }

  void expectPreset(const QString& id) {
    EXPECT_EQ(capture.pending(), shortcutPreset(id)->shortcut);
  }

  ShortcutCapture capture;
};

TEST_F(ShortcutCaptureTest, NothingIsPendingAtFirst) {
  EXPECT_TRUE(capture.isActive());
  EXPECT_EQ(capture.pending(), std::nullopt);
  EXPECT_EQ(capture.confirm(), std::nullopt);
}

TEST_F(ShortcutCaptureTest, ModifiersThatArePresetsAreRecordedAsSuch) {
  EXPECT_EQ(flags(kRightCommand, CommandFlag), Handling::Swallow);
  expectPreset(u"rightCommand"_s);
  EXPECT_EQ(flags(kLeftOption, OptionFlag), Handling::Swallow);
  expectPreset(u"leftOption"_s);
  EXPECT_EQ(flags(kRightOption, OptionFlag), Handling::Swallow);
  expectPreset(u"rightOption"_s);
}

TEST_F(ShortcutCaptureTest, OtherModifiersAreRecordedByTheirKey) {
  const std::pair<std::int64_t, ModifierFlags> rows[] = {{kLeftCommand, CommandFlag},
                                                         {kLeftShift, ShiftFlag},
                                                         {kRightShift, ShiftFlag},
                                                         {kLeftControl, ControlFlag},
                                                         {kRightControl, ControlFlag}};
  for (const auto& [keyCode, flag] : rows) {
    EXPECT_EQ(flags(keyCode, flag), Handling::Swallow);
    EXPECT_EQ(capture.pending(), (CustomKeyShortcut{keyCode, flag, true, {}}));
  }
}

TEST_F(ShortcutCaptureTest, FnIsRecordedAndPassesOn) {
  EXPECT_EQ(flags(kFnKey, 0), Handling::PassOn);
  expectPreset(u"fnGlobe"_s);
  keyDown(kF5);
  EXPECT_EQ(flags(kLeftShift, FnFlag | ShiftFlag), Handling::PassOn);
  expectPreset(u"fnGlobe"_s);
}

TEST_F(ShortcutCaptureTest, FlagsEventsOfOtherKeysPassOnAndChangeNothing) {
  keyDown(kF5);
  EXPECT_EQ(flags(57, 0x10000), Handling::PassOn);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kF5, 0, false, {}}));
}

TEST_F(ShortcutCaptureTest, APlainKeyIsRecordedLettersAndFunctionKeysAlike) {
  EXPECT_EQ(keyDown(0), Handling::Swallow);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{0, 0, false, {}}));
  EXPECT_EQ(keyDown(kF5, FnFlag), Handling::Swallow) << "Fn is no modifier of a key";
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kF5, 0, false, {}}));
  keyDown(kSpace);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kSpace, 0, false, {}}));
}

TEST_F(ShortcutCaptureTest, SpaceWithExactlyOptionOrControlIsAPreset) {
  keyDown(kSpace, OptionFlag);
  expectPreset(u"optionSpace"_s);
  keyDown(kSpace, ControlFlag);
  expectPreset(u"controlSpace"_s);
  keyDown(kSpace, ShiftFlag);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kSpace, ShiftFlag, false, {}}));
  keyDown(kSpace, ControlFlag | OptionFlag);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kSpace, ControlFlag | OptionFlag, false, {}}));
}

TEST_F(ShortcutCaptureTest, AChordIsRecordedWithItsModifiersAndNoOtherFlags) {
  keyDown(kF5, CommandFlag | ShiftFlag | FnFlag | 0x10000);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kF5, CommandFlag | ShiftFlag, false, {}}));
}

TEST_F(ShortcutCaptureTest, EscWithAModifierIsAnOrdinaryChordAndAloneItCancels) {
  EXPECT_EQ(keyDown(kEscape, CommandFlag), Handling::Swallow);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kEscape, CommandFlag, false, {}}));
  EXPECT_TRUE(capture.isActive());
  EXPECT_EQ(keyDown(kEscape), Handling::Swallow);
  EXPECT_EQ(capture.pending(), std::nullopt);
  EXPECT_FALSE(capture.isActive());
}

TEST_F(ShortcutCaptureTest, ControlSpaceLastsUntilControlComesUpWhichIsLeftControlAlone) {
  flags(kLeftControl, ControlFlag);
  keyDown(kSpace, ControlFlag);
  keyUp(kSpace, ControlFlag);
  expectPreset(u"controlSpace"_s);
  flags(kLeftControl, 0);
  EXPECT_EQ(capture.pending(), (CustomKeyShortcut{kLeftControl, ControlFlag, true, {}}));
}

TEST_F(ShortcutCaptureTest, KeyUpsPassOn) {
  EXPECT_EQ(keyUp(kF5), Handling::PassOn);
  EXPECT_EQ(capture.pending(), std::nullopt);
}

TEST_F(ShortcutCaptureTest, ConfirmingTakesWhatIsPendingAndEndsTheCapture) {
  keyDown(kF5);
  EXPECT_EQ(capture.confirm(), (CustomKeyShortcut{kF5, 0, false, {}}));
  EXPECT_FALSE(capture.isActive());
  EXPECT_EQ(keyDown(0), Handling::PassOn);
  EXPECT_EQ(capture.pending(), std::nullopt);
}

TEST_F(ShortcutCaptureTest, CancellingDropsWhatIsPendingAndEndsTheCapture) {
  keyDown(kF5);
  capture.cancel();
  EXPECT_FALSE(capture.isActive());
  EXPECT_EQ(flags(kFnKey, FnFlag), Handling::PassOn);
  EXPECT_EQ(capture.confirm(), std::nullopt);
}

TEST_F(ShortcutCaptureTest, ACapturedControlSpaceIsStoredAsAChoiceAndNotAsARecord) {
  FakeMainThread mainThread;
  FakeClock clock(mainThread);
  TestStorage storage(clock);
  keyDown(kSpace, ControlFlag);
  saveShortcut(storage.settings, HotkeyTrigger::Toggle, *capture.confirm());
  EXPECT_EQ(storage.settings.get(keys::toggleHotkeyChoice), u"controlSpace"_s);
  EXPECT_FALSE(storage.settings.contains(keys::customToggleShortcutData));
}

TEST_F(ShortcutCaptureTest, TheHintSaysWhatTheKeyIsFor) {
  EXPECT_EQ(captureHint(HotkeyTrigger::PushToTalk),
            u"Press any key, modifier, or combination to hold while speaking."_s);
  EXPECT_EQ(captureHint(HotkeyTrigger::Toggle),
            u"Press any key, modifier, or combination to tap to start/stop."_s);
}

}  // namespace
}  // namespace vemo
