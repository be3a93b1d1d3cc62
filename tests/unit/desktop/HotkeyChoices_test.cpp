#include "desktop/HotkeyChoices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop/ShortcutNames.h"
#include "desktop/VirtualKeys.h"
#include "fakes/FakeClock.h"
#include "fakes/TestStorage.h"
#include "storage/Config.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

class HotkeyChoicesTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  Settings& settings = storage.settings;
};

const CustomKeyShortcut commandF5{.keyCode = 96, .modifierFlagsRaw = CommandFlag};

TEST_F(HotkeyChoicesTest, WithoutAChoicePushToTalkIsEitherOptionAndTheToggleIsFn) {
  EXPECT_EQ(pushToTalkChoice(settings), (CustomKeyShortcut{58, 0x80000, true, u"eitherOption"_s}));
  EXPECT_EQ(toggleChoice(settings), (CustomKeyShortcut{63, 0, true, u"fnGlobe"_s}));
}

TEST_F(HotkeyChoicesTest, EveryPresetResolvesToItsRecordWithItsId) {
  const CustomKeyShortcut expected[] = {
      {58, 0x80000, true, u"eitherOption"_s},
      {61, 0x80000, true, u"rightOption"_s},
      {58, 0x80000, true, u"leftOption"_s},
      {54, 0x100000, true, u"rightCommand"_s},
      {63, 0, true, u"fnGlobe"_s},
      {49, 0x40000, false, u"controlSpace"_s},
      {49, 0x80000, false, u"optionSpace"_s},
  };
  ASSERT_EQ(shortcutPresets().size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(shortcutPresets()[i].shortcut, expected[i]);
    settings.set(keys::pushToTalkHotkeyChoice, *expected[i].presetId);
    settings.set(keys::toggleHotkeyChoice, *expected[i].presetId);
    EXPECT_EQ(pushToTalkChoice(settings), expected[i]);
    EXPECT_EQ(toggleChoice(settings), expected[i]);
  }
}

TEST_F(HotkeyChoicesTest, CustomWithoutARecordIsTheDefaultPresetWithItsLabel) {
  settings.set(keys::pushToTalkHotkeyChoice, u"custom"_s);
  settings.set(keys::toggleHotkeyChoice, u"custom"_s);
  EXPECT_EQ(displayName(pushToTalkChoice(settings)), u"Either Option (⌥)"_s);
  EXPECT_EQ(displayName(toggleChoice(settings)), u"Fn / Globe"_s);
}

TEST_F(HotkeyChoicesTest, ARecordThatDoesNotDecodeIsTheDefaultPresetAndLogsNothing) {
  settings.set(keys::toggleHotkeyChoice, u"custom"_s);
  settings.set(keys::customToggleShortcutData, QByteArray("{broken"));
  EXPECT_EQ(toggleChoice(settings).presetId, u"fnGlobe"_s);
  EXPECT_THAT(storage.logMessages(), testing::IsEmpty());
}

TEST_F(HotkeyChoicesTest, AChoiceOfAFutureVersionIsTheDefaultOfItsTrigger) {
  settings.set(keys::pushToTalkHotkeyChoice, u"doubleTapShift"_s);
  settings.set(keys::toggleHotkeyChoice, u"doubleTapShift"_s);
  EXPECT_EQ(pushToTalkChoice(settings).presetId, u"eitherOption"_s);
  EXPECT_EQ(toggleChoice(settings).presetId, u"fnGlobe"_s);
}

TEST_F(HotkeyChoicesTest, ARecordCountsOnlyWhileTheChoiceIsCustom) {
  settings.set(keys::customToggleShortcutData, encodeShortcut(commandF5));
  EXPECT_EQ(toggleChoice(settings).presetId, u"fnGlobe"_s);
  settings.set(keys::toggleHotkeyChoice, u"custom"_s);
  EXPECT_EQ(toggleChoice(settings), commandF5);
  EXPECT_EQ(pushToTalkChoice(settings).presetId, u"eitherOption"_s);
}

TEST_F(HotkeyChoicesTest, SavingAPresetStoresItsIdAndLeavesAnOlderRecord) {
  settings.set(keys::customToggleShortcutData, encodeShortcut(commandF5));
  EXPECT_EQ(
      saveShortcut(settings, HotkeyTrigger::Toggle, shortcutPreset(u"controlSpace"_s)->shortcut),
      u"Start / Stop set to Control + Space (⌃␣)"_s);
  EXPECT_EQ(settings.get(keys::toggleHotkeyChoice), u"controlSpace"_s);
  EXPECT_EQ(settings.get(keys::customToggleShortcutData), encodeShortcut(commandF5));
}

TEST_F(HotkeyChoicesTest, SavingAFreeShortcutStoresItsRecordAndTheChoiceCustom) {
  EXPECT_EQ(saveShortcut(settings, HotkeyTrigger::PushToTalk, commandF5),
            u"Push-to-Talk set to Command + F5"_s);
  EXPECT_EQ(settings.get(keys::pushToTalkHotkeyChoice), u"custom"_s);
  EXPECT_EQ(pushToTalkChoice(settings), commandF5);
  EXPECT_FALSE(settings.contains(keys::toggleHotkeyChoice));
  EXPECT_FALSE(settings.contains(keys::customToggleShortcutData));
}

TEST_F(HotkeyChoicesTest, ARecordThatCannotBeEncodedRemovesTheOneBefore) {
  saveShortcut(settings, HotkeyTrigger::PushToTalk, commandF5);
  saveShortcut(settings, HotkeyTrigger::PushToTalk,
               {.keyCode = 96, .modifierFlagsRaw = std::uint64_t{1} << 63});
  EXPECT_FALSE(settings.contains(keys::customPushToTalkShortcutData));
  EXPECT_EQ(pushToTalkChoice(settings).presetId, u"eitherOption"_s);
}

TEST_F(HotkeyChoicesTest, RemovingTheRecordOfATriggerLeavesTheOther) {
  saveShortcut(settings, HotkeyTrigger::PushToTalk, commandF5);
  saveShortcut(settings, HotkeyTrigger::Toggle, commandF5);
  removeRecordedShortcut(settings, HotkeyTrigger::Toggle);
  EXPECT_FALSE(settings.contains(keys::customToggleShortcutData));
  EXPECT_EQ(pushToTalkChoice(settings), commandF5);
}

TEST_F(HotkeyChoicesTest, AControlSpacePickedAfterTheMigrationStays) {
  settings.set(keys::toggleHotkeyChoice, u"controlSpace"_s);
  config::migrateToggleHotkeyIfNeeded(settings, storage.debugLog);
  EXPECT_EQ(toggleChoice(settings).presetId, u"fnGlobe"_s);
  EXPECT_TRUE(
      storage.hasLogged(u"config: migrated legacy controlSpace toggle hotkey to fnGlobe"_s));
  saveShortcut(settings, HotkeyTrigger::Toggle, shortcutPreset(u"controlSpace"_s)->shortcut);
  config::migrateToggleHotkeyIfNeeded(settings, storage.debugLog);
  EXPECT_EQ(toggleChoice(settings).presetId, u"controlSpace"_s);
}

TEST_F(HotkeyChoicesTest, TheQuickPresetsAndTheDefaultsAreWhatTheSettingsOffer) {
  EXPECT_THAT(quickPresetIds,
              testing::ElementsAre(u"fnGlobe"_s, u"eitherOption"_s, u"rightOption"_s,
                                   u"controlSpace"_s, u"optionSpace"_s));
  for (const auto* id : quickPresetIds) EXPECT_TRUE(shortcutPreset(QString::fromUtf16(id)));
  EXPECT_EQ(defaultPreset(HotkeyTrigger::PushToTalk).shortcut.presetId, u"eitherOption"_s);
  EXPECT_EQ(defaultPreset(HotkeyTrigger::Toggle).shortcut.presetId, u"fnGlobe"_s);
}

}  // namespace
}  // namespace vemo
