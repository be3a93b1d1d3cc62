#include "storage/Config.h"

#include <QSet>

#include "StorageTest.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ConfigTest : public StorageTest {
 protected:
  Settings settings{path(u"settings.json"_s), debugLog};
};

TEST_F(ConfigTest, TheLanguagesAreTwentyFiveInTheOrderOfThePicker) {
  QStringList codes;
  for (const auto& language : config::languages()) codes.append(language.code);
  EXPECT_EQ(codes.join(u' '),
            u"multi en hinglish hi bn gu kn ml mr or pa ta te as ur ne sa brx doi kok ks mai mni "
            "sat sd"_s);
}

TEST_F(ConfigTest, HinglishAloneUsesTheOlderModelAndACodeOfItsOwn) {
  for (const auto& language : config::languages()) {
    const bool isHinglish = language.code == u"hinglish"_s;
    EXPECT_EQ(language.model, isHinglish ? u"saaras:v3"_s : u"saaras:v4"_s);
    EXPECT_EQ(language.backendCode.has_value(), isHinglish);
    EXPECT_FALSE(language.name.isEmpty() || language.nativeName.isEmpty());
  }
}

TEST_F(ConfigTest, HinglishProducesLanguageEnAndModelSaarasV3) {
  settings.set(keys::dictationLanguage, u"hinglish"_s);
  const auto& language = config::currentLanguage(settings);
  EXPECT_EQ(config::effectiveLanguageCode(language), u"en"_s);
  EXPECT_EQ(language.model, u"saaras:v3"_s);
}

TEST_F(ConfigTest, MultiIsSentToTheServiceAsMulti) {
  EXPECT_EQ(config::effectiveLanguageCode(config::language(u"multi"_s)), u"multi"_s);
}

TEST_F(ConfigTest, AStoredLanguageThatIsNotInTheTableIsEnglishAndStaysStored) {
  settings.set(keys::dictationLanguage, u"xx"_s);
  EXPECT_EQ(config::currentLanguage(settings), config::language(u"en"_s));
  EXPECT_EQ(settings.get(keys::dictationLanguage), u"xx"_s);
}

TEST_F(ConfigTest, WithoutAStoredLanguageItIsEnglish) {
  EXPECT_EQ(config::currentLanguage(settings).code, u"en"_s);
}

TEST_F(ConfigTest, ALanguageCodeMatchesExactlyOrNotAtAll) {
  for (const QString& code : {u""_s, u"HI"_s, u"hi "_s, u"English"_s, QString(10000, u'h')})
    EXPECT_EQ(config::language(code).code, u"en"_s);
  EXPECT_EQ(config::language(u"sd"_s).nativeName, u"سنڌي"_s);
}

TEST_F(ConfigTest, LanguagesCompareAndHashOverAllFields) {
  const DictationLanguage original = config::language(u"hinglish"_s);
  QSet<DictationLanguage> seen{original};
  for (const auto field : {&DictationLanguage::code, &DictationLanguage::name,
                           &DictationLanguage::nativeName, &DictationLanguage::model}) {
    auto changed = original;
    changed.*field += u'x';
    seen.insert(changed);
  }
  auto changed = original;
  changed.backendCode.reset();
  seen.insert(changed);
  EXPECT_EQ(seen.size(), 6);
  EXPECT_TRUE(seen.contains(original));
}

TEST_F(ConfigTest, OutputModesHaveTheirRowsAndLabels) {
  const auto modes = config::outputModes();
  ASSERT_EQ(modes.size(), 3u);
  EXPECT_EQ(modes[0].value, u"translit"_s);
  EXPECT_EQ(modes[0].selectedRow, u"✓ English Script (Translit)"_s);
  EXPECT_EQ(modes[0].unselectedRow, u"   English Script (Translit)"_s);
  EXPECT_EQ(modes[1].value, u"transcribe"_s);
  EXPECT_EQ(modes[1].selectedRow, u"✓ Native Script (Transcribe)"_s);
  EXPECT_EQ(modes[1].unselectedRow, u"   Native Script (Transcribe)"_s);
  EXPECT_EQ(modes[2].value, u"codemix"_s);
  EXPECT_EQ(modes[2].selectedRow, u"✓ Mixed (Codemix)"_s);
  EXPECT_EQ(modes[2].unselectedRow, u"   Mixed (Codemix)"_s);
  EXPECT_EQ(config::outputModeShortLabel(u"translit"_s), u"English (Translit)"_s);
  EXPECT_EQ(config::outputModeShortLabel(u"transcribe"_s), u"Native Script"_s);
  EXPECT_EQ(config::outputModeShortLabel(u"codemix"_s), u"Mixed (Codemix)"_s);
  EXPECT_EQ(config::outputModeShortLabel(u"anything"_s), u"Mixed (Codemix)"_s);
}

TEST_F(ConfigTest, WithAnEmptyStoreWindowsShowTranslitWhileARequestCarriesTranscribe) {
  EXPECT_EQ(config::displayedOutputMode(settings), u"translit"_s);
  EXPECT_EQ(config::requestOutputMode(settings), u"transcribe"_s);
  EXPECT_FALSE(settings.contains(keys::dictateOutputMode));
}

TEST_F(ConfigTest, AStoredOutputModeIsBothShownAndSent) {
  settings.set(keys::dictateOutputMode, u"codemix"_s);
  EXPECT_EQ(config::displayedOutputMode(settings), u"codemix"_s);
  EXPECT_EQ(config::requestOutputMode(settings), u"codemix"_s);
}

TEST_F(ConfigTest, AStoredControlSpaceBecomesFnGlobeOnce) {
  settings.set(keys::toggleHotkeyChoice, u"controlSpace"_s);
  config::migrateToggleHotkeyIfNeeded(settings, debugLog);
  EXPECT_EQ(settings.get(keys::toggleHotkeyChoice), u"fnGlobe"_s);
  EXPECT_THAT(logged(),
              ElementsAre(u"config: migrated legacy controlSpace toggle hotkey to fnGlobe"_s));

  settings.set(keys::toggleHotkeyChoice, u"controlSpace"_s);
  config::migrateToggleHotkeyIfNeeded(settings, debugLog);
  EXPECT_EQ(settings.get(keys::toggleHotkeyChoice), u"controlSpace"_s);
}

TEST_F(ConfigTest, TheMigrationLeavesOtherChoicesAloneAndSetsItsMarker) {
  config::migrateToggleHotkeyIfNeeded(settings, debugLog);
  EXPECT_FALSE(settings.contains(keys::toggleHotkeyChoice));
  EXPECT_EQ(settings.get(keys::toggleHotkeyLegacyMigrationDone), true);

  settings.remove(keys::toggleHotkeyLegacyMigrationDone);
  settings.set(keys::toggleHotkeyChoice, u"custom"_s);
  config::migrateToggleHotkeyIfNeeded(settings, debugLog);
  EXPECT_EQ(settings.get(keys::toggleHotkeyChoice), u"custom"_s);
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(ConfigTest, TheMigrationWritesItsMarkerBeforeItReadsTheChoice) {
  settings.set(keys::toggleHotkeyChoice, u"controlSpace"_s);
  QStringList order;
  const auto observation =
      settings.changed.observe([&order](const QString& name) { order.append(name); });
  config::migrateToggleHotkeyIfNeeded(settings, debugLog);
  EXPECT_THAT(order, ElementsAre(u"toggleHotkeyLegacyMigrationDone"_s, u"toggleHotkeyChoice"_s));
}

TEST_F(ConfigTest, CustomShortcutsAreStoredReadAndRemovedEachUnderItsOwnKey) {
  const CustomKeyShortcut shortcut{.keyCode = 49, .modifierFlagsRaw = 0x80000};
  config::setCustomToggleShortcut(settings, shortcut);
  EXPECT_EQ(config::customToggleShortcut(settings), shortcut);
  EXPECT_EQ(config::customPushToTalkShortcut(settings), std::nullopt);
  config::setCustomPushToTalkShortcut(settings, shortcut);
  config::setCustomToggleShortcut(settings, std::nullopt);
  EXPECT_FALSE(settings.contains(keys::customToggleShortcutData));
  EXPECT_EQ(config::customPushToTalkShortcut(settings), shortcut);
  config::setCustomPushToTalkShortcut(settings, std::nullopt);
  EXPECT_FALSE(settings.contains(keys::customPushToTalkShortcutData));
}

TEST_F(ConfigTest, AShortcutThatDoesNotDecodeIsNoneAndNothingIsLogged) {
  settings.set(keys::customToggleShortcutData, QByteArray("{\"keyCode\":"));
  EXPECT_EQ(config::customToggleShortcut(settings), std::nullopt);
  EXPECT_THAT(logged(), IsEmpty());
}

}  // namespace
}  // namespace vemo
