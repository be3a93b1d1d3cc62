#include "ui/models/SystemSettingsModel.h"

#include <QVariantMap>

#include "desktop/VirtualKeys.h"
#include "fakes/FakeLoginItem.h"
#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString microphonePaneAddress =
    u"x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone"_s;
const QString accessibilityPaneAddress =
    u"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"_s;

class SystemSettingsModelTest : public SessionFixture {
 protected:
  SystemSettingsModelTest() {
    configuration.websiteURL = QUrl(u"https://vemo.example"_s);
    startUp();
    system.microphoneRequests.clear();
    windows.takeCalls();
    model = std::make_unique<SystemSettingsModel>(
        SystemSettingsModel::With{.settings = storage.settings,
                                  .debugLog = storage.debugLog,
                                  .telemetry = telemetry,
                                  .permissions = *permissions,
                                  .loginItem = loginItem,
                                  .windows = windows,
                                  .configuration = configuration});
    QObject::connect(model.get(), &SystemSettingsModel::changed, [this] { ++changes; });
    QObject::connect(model.get(), &SystemSettingsModel::languageChanged,
                     [this] { ++languageChanges; });
    QObject::connect(model.get(), &SystemSettingsModel::modeChanged, [this] { ++modeChanges; });
  }

  QStringList column(const QVariantList& rows, const QString& name) const {
    QStringList values;
    for (const QVariant& row : rows) values.append(row.toMap().value(name).toString());
    return values;
  }

  FakeLoginItem loginItem;
  std::unique_ptr<SystemSettingsModel> model;
  int changes = 0;
  int languageChanges = 0;
  int modeChanges = 0;
};

TEST_F(SystemSettingsModelTest, WhatIsAbsentReadsAsItsDefault) {
  EXPECT_EQ(model->selectedDictateMode(), u"translit"_s);
  EXPECT_EQ(model->selectedLanguage(), u"en"_s);
  EXPECT_EQ(model->selectedPTTHotkey(), u"Either Option (⌥)"_s);
  EXPECT_EQ(model->selectedToggleHotkey(), u"Fn / Globe"_s);
  EXPECT_TRUE(model->shareUsageStatistics());
  EXPECT_TRUE(model->showInDock());
  EXPECT_EQ(model->dictationPillColor(), u"dark"_s);
  EXPECT_TRUE(model->dictationSounds());
  EXPECT_TRUE(model->integrationVSCode());
  EXPECT_TRUE(model->integrationSlack());
  EXPECT_FALSE(storage.settings.contains(keys::dictateOutputMode));
}

// Speech & AI engine

TEST_F(SystemSettingsModelTest, ChoosingALanguageWritesItForEveryReader) {
  model->setSelectedLanguage(u"hi"_s);
  EXPECT_EQ(storage.settings.get(keys::dictationLanguage), u"hi"_s);
  EXPECT_EQ(model->selectedLanguage(), u"hi"_s);
  EXPECT_EQ(model->languageName(), u"Hindi"_s);
  EXPECT_EQ(languageChanges, 1);
}

TEST_F(SystemSettingsModelTest, ALanguageWrittenElsewhereShowsAtOnce) {
  storage.settings.set(keys::dictationLanguage, u"ta"_s);
  EXPECT_EQ(model->languageName(), u"Tamil"_s);
  EXPECT_EQ(languageChanges, 1);
}

TEST_F(SystemSettingsModelTest, EveryLanguageIsOfferedAndTheChosenOneTicked) {
  model->setSelectedLanguage(u"multi"_s);
  const QStringList rows = column(model->languages(), u"text"_s);
  ASSERT_EQ(rows.size(), 25);
  EXPECT_EQ(rows.front(), u"✓ Auto Detect (Multilingual)"_s);
  EXPECT_EQ(rows[1], u"   English (English (India / Global))"_s);
}

TEST_F(SystemSettingsModelTest, ALanguageThatIsNotOfferedIsNotWritten) {
  model->setSelectedLanguage(u"xx"_s);
  EXPECT_FALSE(storage.settings.contains(keys::dictationLanguage));
}

TEST_F(SystemSettingsModelTest, EachOutputModeHasItsRowTickedAndNotAndItsLabel) {
  const struct {
    QString value;
    QStringList rows;
    QString label;
  } modes[] = {
      {u"translit"_s,
       {u"✓ English Script (Translit)"_s, u"   Native Script (Transcribe)"_s,
        u"   Mixed (Codemix)"_s},
       u"English (Translit)"_s},
      {u"transcribe"_s,
       {u"   English Script (Translit)"_s, u"✓ Native Script (Transcribe)"_s,
        u"   Mixed (Codemix)"_s},
       u"Native Script"_s},
      {u"codemix"_s,
       {u"   English Script (Translit)"_s, u"   Native Script (Transcribe)"_s,
        u"✓ Mixed (Codemix)"_s},
       u"Mixed (Codemix)"_s},
  };
  for (const auto& mode : modes) {
    model->setSelectedDictateMode(mode.value);
    EXPECT_EQ(storage.settings.get(keys::dictateOutputMode), mode.value);
    EXPECT_EQ(column(model->modes(), u"text"_s), mode.rows);
    EXPECT_EQ(model->modeLabel(), mode.label);
  }
  EXPECT_EQ(modeChanges, 3);
}

TEST_F(SystemSettingsModelTest, AModeThatIsNotOfferedIsNotWritten) {
  model->setSelectedDictateMode(u"shout"_s);
  EXPECT_FALSE(storage.settings.contains(keys::dictateOutputMode));
}

// Hotkeys

TEST_F(SystemSettingsModelTest, ARecordedShortcutReadsAsCustom) {
  storage.settings.set(keys::pushToTalkHotkeyChoice, u"custom"_s);
  storage.settings.set(keys::customPushToTalkShortcutData,
                       encodeShortcut({.keyCode = 100, .modifierFlagsRaw = ControlFlag}));
  EXPECT_EQ(model->selectedPTTHotkey(), u"Custom: Control + F8"_s);
  EXPECT_EQ(model->selectedToggleHotkey(), u"Fn / Globe"_s);
}

TEST_F(SystemSettingsModelTest, ACustomChoiceWithoutItsRecordReadsAsTheDefault) {
  storage.settings.set(keys::toggleHotkeyChoice, u"custom"_s);
  EXPECT_EQ(model->selectedToggleHotkey(), u"Fn / Globe"_s);
}

// App settings

TEST_F(SystemSettingsModelTest, LaunchAtLoginShowsWhatTheDesktopWillDoWhenTheWindowOpens) {
  model->windowOpened();
  EXPECT_FALSE(model->launchAtLogin())
      << "nothing was arranged yet, whatever the setting's default";
  EXPECT_FALSE(storage.settings.contains(keys::launchAtLogin));
  loginItem.changeFromOutside(true);
  changes = 0;
  model->windowOpened();
  EXPECT_TRUE(model->launchAtLogin());
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(loginItem.changeCount(), 0) << "looking changes nothing";
}

TEST_F(SystemSettingsModelTest, ASwitchThatAFailureLeftReadsAsItIsAtTheNextOpening) {
  loginItem.fail(u"no"_s);
  model->setLaunchAtLogin(true);
  EXPECT_TRUE(model->launchAtLogin());
  model->windowOpened();
  EXPECT_FALSE(model->launchAtLogin());
}

TEST_F(SystemSettingsModelTest, LaunchAtLoginIsWrittenAndRegistered) {
  model->setLaunchAtLogin(false);
  EXPECT_EQ(storage.settings.get(keys::launchAtLogin), false);
  EXPECT_FALSE(loginItem.isRegistered());
  model->setLaunchAtLogin(true);
  EXPECT_TRUE(model->launchAtLogin());
  EXPECT_TRUE(loginItem.isRegistered());
  EXPECT_EQ(loginItem.changeCount(), 2);
}

TEST_F(SystemSettingsModelTest, ALoginItemThatFailsLeavesTheSettingOnAndIsOnlyLogged) {
  loginItem.fail(u"the folder can't be written"_s);
  model->setLaunchAtLogin(true);
  EXPECT_TRUE(model->launchAtLogin());
  EXPECT_EQ(storage.settings.get(keys::launchAtLogin), true);
  EXPECT_TRUE(storage.hasLogged(u"Failed to update SMAppService: the folder can't be written"_s));
}

TEST_F(SystemSettingsModelTest, AFailureToLeaveTheLoginItemsLeavesTheSettingOff) {
  loginItem.fail(u"no"_s);
  model->setLaunchAtLogin(false);
  EXPECT_FALSE(model->launchAtLogin());
  EXPECT_TRUE(storage.hasLogged(u"Failed to update SMAppService: no"_s));
}

TEST_F(SystemSettingsModelTest, LeavingTheDockOnlyTakesThePlaceAway) {
  model->setShowInDock(false);
  EXPECT_EQ(storage.settings.get(keys::showInDock), false);
  EXPECT_THAT(windows.takeCalls(), ElementsAre("accessory"));
}

TEST_F(SystemSettingsModelTest, ReturningToTheDockBringsTheWindowBackToo) {
  model->setShowInDock(false);
  windows.takeCalls();
  model->setShowInDock(true);
  EXPECT_EQ(storage.settings.get(keys::showInDock), true);
  EXPECT_THAT(windows.takeCalls(), ElementsAre("regular", "activate"));
}

// Appearance, sound, integrations

TEST_F(SystemSettingsModelTest, ThePillComesInThreeColours) {
  EXPECT_EQ(column(model->pillColors(), u"value"_s),
            (QStringList{u"dark"_s, u"light"_s, u"teal"_s}));
  EXPECT_EQ(column(model->pillColors(), u"fill"_s),
            (QStringList{u"#f00e0e10"_s, u"#fafafcff"_s, u"#f58564e7"_s}));
}

TEST_F(SystemSettingsModelTest, APillColourIsWritten) {
  model->setDictationPillColor(u"teal"_s);
  EXPECT_EQ(storage.settings.get(keys::dictationPillColor), u"teal"_s);
  EXPECT_EQ(model->dictationPillColor(), u"teal"_s);
  model->setDictationPillColor(u"pink"_s);
  EXPECT_EQ(model->dictationPillColor(), u"teal"_s);
}

TEST_F(SystemSettingsModelTest, EachSwitchWritesItsOwnSetting) {
  model->setDictationSounds(false);
  EXPECT_EQ(storage.settings.get(keys::dictationSounds), false);
  EXPECT_TRUE(model->integrationVSCode());
  model->setIntegrationVSCode(false);
  EXPECT_EQ(storage.settings.get(keys::integrationVSCode), false);
  EXPECT_TRUE(model->integrationSlack());
  model->setIntegrationSlack(false);
  EXPECT_EQ(storage.settings.get(keys::integrationSlack), false);
  model->setIntegrationSlack(true);
  EXPECT_TRUE(model->integrationSlack());
  EXPECT_EQ(changes, 4);
}

// Permissions

TEST_F(SystemSettingsModelTest, GrantedPermissionsReadSo) {
  EXPECT_TRUE(model->isMicrophoneGranted());
  EXPECT_TRUE(model->isAccessibilityGranted());
}

TEST_F(SystemSettingsModelTest, APermissionThatIsTakenAwayShowsWithTheNextPoll) {
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  system.isTrusted = false;
  clock.advance(2s);
  EXPECT_FALSE(model->isMicrophoneGranted());
  EXPECT_FALSE(model->isAccessibilityGranted());
  EXPECT_GT(changes, 0);
}

TEST_F(SystemSettingsModelTest, GrantingTheMicrophoneAsksForItAndOpensItsPane) {
  system.openedPanes.clear();
  model->grantMicrophone();
  EXPECT_EQ(system.microphoneRequests.size(), 1u);
  EXPECT_THAT(system.openedPanes, ElementsAre(QUrl(microphonePaneAddress)));
}

TEST_F(SystemSettingsModelTest, GrantingAccessibilityPromptsAndOpensItsPane) {
  system.openedPanes.clear();
  const int before = system.accessibilityPrompts;
  model->grantAccessibility();
  EXPECT_EQ(system.accessibilityPrompts, before + 1);
  EXPECT_THAT(system.openedPanes, ElementsAre(QUrl(accessibilityPaneAddress)));
}

// Privacy

TEST_F(SystemSettingsModelTest, SharingUsageStatisticsGoesThroughTelemetry) {
  takeEvents();
  telemetry.track(TelemetryEvent::tabOpened(u"home"_s));
  model->setShareUsageStatistics(false);
  EXPECT_FALSE(model->shareUsageStatistics());
  telemetry.track(TelemetryEvent::tabOpened(u"stats"_s));
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(SystemSettingsModelTest, ThePrivacyNoteLinksThePolicy) {
  EXPECT_EQ(
      model->privacyNote(),
      u"Counts of how you use Vemo (features, timings, your Mac's model and language settings) "
      "help us improve it. Never what you say or type. Errors, crashes and update results are "
      "always sent so Vemo keeps working. [Privacy Policy](https://vemo.example/privacy)"_s);
}

}  // namespace
}  // namespace vemo
