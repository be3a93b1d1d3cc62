// Changes of settings as events.
#include "TelemetryFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class TelemetrySettingsTest : public TelemetryFixture {
 protected:
  void launch() {
    with.http.answer(installPath, 200);
    telemetry.start(false);
    telemetry.drainForAccountChange();
    settle();
  }

  void setDictionaryCount(int count) {
    QJsonArray entries;
    for (int index = 0; index < count; ++index) entries.append(QJsonObject());
    settings.set(keys::customDictionaryEntries, compactJson(entries));
  }

  /// Which events the changes so far have given, as "name {props}".
  std::vector<std::string> takeEvents() {
    settle();
    std::vector<std::string> events;
    for (const auto& [event, at] : telemetry.queue())
      events.push_back(event.name().toStdString() + ' ' + compactJson(event.props()).toStdString());
    const auto wasSignedIn = with.tokens.read(QString::fromUtf16(authTokenAccount));
    signOut();
    telemetry.drainForAccountChange();
    if (wasSignedIn) signIn();
    return events;
  }
};

TEST_F(TelemetrySettingsTest, LanguageAndOutputModeTellFromWhatToWhat) {
  settings.set(keys::dictationLanguage, u"en"_s);
  settings.set(keys::dictateOutputMode, u"transcribe"_s);
  launch();
  settings.set(keys::dictationLanguage, u"hi"_s);
  EXPECT_THAT(takeEvents(), ElementsAre(R"(language_changed {"from":"en","to":"hi"})"));
  settings.set(keys::dictateOutputMode, u"translit"_s);
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(output_mode_changed {"from":"transcribe","to":"translit"})"));
}

TEST_F(TelemetrySettingsTest, AShortcutTellsItsActionAndItsNewValue) {
  settings.set(keys::pushToTalkHotkeyChoice, u"eitherOption"_s);
  settings.set(keys::toggleHotkeyChoice, u"fnGlobe"_s);
  launch();
  settings.set(keys::pushToTalkHotkeyChoice, u"custom"_s);
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(shortcut_changed {"action":"hold","shortcut":"custom"})"));
  settings.set(keys::toggleHotkeyChoice, u"controlSpace"_s);
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(shortcut_changed {"action":"toggle","shortcut":"controlSpace"})"));
}

TEST_F(TelemetrySettingsTest, EachOtherWatchedSettingTellsItsName) {
  const keys::Bool watched[] = {keys::showInDock,         keys::launchAtLogin,
                                keys::dictationSounds,    keys::integrationSlack,
                                keys::integrationVSCode,  keys::isEnabled,
                                keys::receiveBetaUpdates, keys::showLiveDictationText};
  for (const auto& key : watched) settings.set(key, false);
  settings.set(keys::dictationPillColor, u"dark"_s);
  settings.set(keys::shareUsageStatistics, false);
  launch();
  for (const auto& key : watched) {
    settings.set(keys::shareUsageStatistics, true);
    takeEvents();
    settings.set(key, true);
    EXPECT_THAT(takeEvents(), ElementsAre(R"(setting_changed {"setting":")" +
                                          QString::fromUtf16(key.name).toStdString() + R"("})"));
  }
  settings.set(keys::dictationPillColor, u"teal"_s);
  EXPECT_THAT(takeEvents(), ElementsAre(R"(setting_changed {"setting":"dictationPillColor"})"));
}

TEST_F(TelemetrySettingsTest, SharingThatIsTurnedOnIsToldAndOffIsNot) {
  settings.set(keys::shareUsageStatistics, false);
  launch();
  settings.set(keys::shareUsageStatistics, true);
  EXPECT_THAT(takeEvents(), ElementsAre(R"(setting_changed {"setting":"shareUsageStatistics"})"));
  settings.set(keys::shareUsageStatistics, false);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(TelemetrySettingsTest, ASettingWrittenForTheFirstTimeOrRemovedFiresNothing) {
  launch();
  settings.set(keys::dictationLanguage, u"hi"_s);
  EXPECT_THAT(takeEvents(), IsEmpty());
  settings.remove(keys::dictationLanguage);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(TelemetrySettingsTest, AChangeAndItsOppositeInOneTurnFireNothing) {
  settings.set(keys::dictationLanguage, u"en"_s);
  launch();
  settings.set(keys::dictationLanguage, u"hi"_s);
  settings.set(keys::dictationLanguage, u"en"_s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(TelemetrySettingsTest, ASettingThatNobodyWatchesCostsNoTask) {
  launch();
  settings.set(keys::recentDictations, "[]"_ba);
  EXPECT_TRUE(mainThread.isEmpty());
  settings.set(keys::dictationSounds, false);
  EXPECT_FALSE(mainThread.isEmpty());
}

TEST_F(TelemetrySettingsTest, ADictionaryThatGrowsFrom3To40FiresTenWordsAdded) {
  setDictionaryCount(3);
  launch();
  signIn();
  setDictionaryCount(40);
  const auto events = takeEvents();
  EXPECT_THAT(events, SizeIs(10));
  EXPECT_THAT(events, testing::Each("dictionary_word_added {}"));
}

TEST_F(TelemetrySettingsTest, ADictionaryThatGrowsWhileSignedOutFiresNothingThenOrLater) {
  setDictionaryCount(3);
  launch();
  setDictionaryCount(40);
  EXPECT_THAT(takeEvents(), IsEmpty());
  signIn();
  setDictionaryCount(41);
  EXPECT_THAT(takeEvents(), ElementsAre("dictionary_word_added {}"));
}

TEST_F(TelemetrySettingsTest, ADictionaryThatShrinksFiresOneEventAWordAndNoMoreThanTen) {
  setDictionaryCount(14);
  launch();
  signIn();
  setDictionaryCount(12);
  EXPECT_THAT(takeEvents(),
              ElementsAre("dictionary_word_removed {}", "dictionary_word_removed {}"));
  settings.set(keys::customDictionaryEntries, "not a list"_ba);
  EXPECT_THAT(takeEvents(), SizeIs(10));
}

TEST_F(TelemetrySettingsTest, ShortcutEntriesAreNotCounted) {
  launch();
  signIn();
  settings.set(keys::customShortcutEntries, "[{},{}]"_ba);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

}  // namespace
}  // namespace vemo
