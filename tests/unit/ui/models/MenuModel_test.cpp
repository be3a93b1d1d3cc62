#include "ui/models/MenuModel.h"

#include "fakes/FakeScenes.h"
#include "session/SessionFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class MenuModelTest : public SessionFixture {
 protected:
  void startUp() {
    SessionFixture::startUp();
    model.emplace(MenuModel::With{.settings = storage.settings,
                                  .appState = *appState,
                                  .auth = *auth,
                                  .permissions = *permissions,
                                  .scenes = scenes,
                                  .updates = [this] { return updates; },
                                  .restartToUpdate = [this] { calls.push_back("restart"); },
                                  .checkForUpdates = [this] { calls.push_back("check"); },
                                  .quitClosingSheets = [this] { calls.push_back("quit"); }});
    observation = model->changed.observe([this] { ++changes; });
  }

  /// The menu as a person reads it: dividers are "-", what can't be pressed is in parentheses.
  std::vector<std::string> lines() const {
    std::vector<std::string> read;
    for (const MenuItem& item : model->items()) {
      const std::string text = item.text.toStdString();
      read.push_back(item.kind == MenuItem::Kind::Divider ? "-"
                     : item.isEnabled                     ? text
                                                          : '(' + text + ')');
    }
    return read;
  }

  MenuItem item(const QString& text) const {
    for (const MenuItem& item : model->items()) {
      if (item.text == text) return item;
    }
    ADD_FAILURE() << "no " << qPrintable(text);
    return {.action = [] {}};
  }

  void signOut() {
    appState->clearLocalUserData();
    mainThread.drain();
  }

  FakeScenes scenes;
  MenuUpdates updates;
  std::vector<std::string> calls;
  std::optional<MenuModel> model;
  Observation observation;
  int changes = 0;
};

TEST_F(MenuModelTest, WithAllGivenAndNothingDictatedTheMenuIsAtItsShortest) {
  startUp();
  EXPECT_THAT(lines(), ElementsAre("(Ready)", "Open Vemo Window", "Settings", "-", "Enable Vemo",
                                   "-", "Language: English", "-", "(Signed in: unknown)",
                                   "Sign Out", "-", "Quit Vemo"));
}

TEST_F(MenuModelTest, SignedInAtItsLongestEveryLineStandsInItsPlace) {
  startUp();
  dictate(u"hello there"_s);
  finishPaste();
  updates = {.isConfigured = true,
             .canCheckForUpdates = true,
             .canRestartNow = true,
             .readyVersion = u"2.0"_s};
  EXPECT_THAT(lines(),
              ElementsAre("Restart to Update (2.0)", "-", "(Ready)", "Open Vemo Window", "Settings",
                          "-", "(Last: hello there)", "Copy Last Transcript", "-", "Enable Vemo",
                          "-", "Language: English", "-", "(Signed in: unknown)", "Sign Out", "-",
                          "Check for Updates…", "Quit Vemo"));
}

TEST_F(MenuModelTest, SignedOutWithoutPermissionsEveryLineStandsInItsPlace) {
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  system.isTrusted = false;
  storage.settings.set(keys::dictationLanguage, u"hi"_s);
  startUp();
  signOut();
  auth->setLastError(u"Can't reach the server"_s);
  EXPECT_THAT(lines(),
              ElementsAre('(' + appState->statusText().toStdString() + ')', "Open Vemo Window",
                          "Settings", "-", "Enable Vemo", "-", "Language: Hindi",
                          "Grant Microphone Access…", "Grant Accessibility Access…", "-",
                          "Sign In with Google", "(Can't reach the server)", "-", "Quit Vemo"));
}

TEST_F(MenuModelTest, WithoutConfiguredUpdatesNoUpdateEntryShows) {
  updates = {.isConfigured = false, .canCheckForUpdates = true, .pendingVersion = u"2.0"_s};
  startUp();
  EXPECT_THAT(lines(), Not(Contains("Check for Updates…")));
  EXPECT_THAT(lines(), Not(Contains("Install Update 2.0")));
}

TEST_F(MenuModelTest, AReadyUpdateStaysDisabledAtTheTopDuringADictation) {
  startUp();
  updates = {.isConfigured = true,
             .canCheckForUpdates = true,
             .canRestartNow = false,
             .readyVersion = u"2.0"_s};
  startRecording();
  EXPECT_EQ(lines().front(), "(Restart to Update (2.0))");
  updates.canRestartNow = true;
  EXPECT_EQ(lines().front(), "Restart to Update (2.0)");
  item(u"Restart to Update (2.0)"_s).action();
  EXPECT_THAT(calls, ElementsAre("restart"));
}

TEST_F(MenuModelTest, APendingUpdateIsOfferedUntilOneIsReady) {
  startUp();
  updates = {.isConfigured = true, .canCheckForUpdates = false, .pendingVersion = u"2.1"_s};
  EXPECT_THAT(lines(), Contains("Install Update 2.1"));
  EXPECT_THAT(lines(), Contains("(Check for Updates…)"));
  item(u"Install Update 2.1"_s).action();
  EXPECT_THAT(calls, ElementsAre("check"));
  updates.readyVersion = u"2.1"_s;
  EXPECT_THAT(lines(), Not(Contains("Install Update 2.1")));
}

TEST_F(MenuModelTest, CheckForUpdatesAndQuitCallTheirServices) {
  updates = {.isConfigured = true, .canCheckForUpdates = true};
  startUp();
  item(u"Check for Updates…"_s).action();
  item(u"Quit Vemo"_s).action();
  EXPECT_THAT(calls, ElementsAre("check", "quit"));
  EXPECT_EQ(item(u"Quit Vemo"_s).shortcut, u"Ctrl+Q"_s);
}

TEST_F(MenuModelTest, ATranscriptOf40CharactersShowsWhole) {
  startUp();
  dictate(QString(40, u'a'));
  finishPaste();
  EXPECT_THAT(lines(), Contains("(Last: " + std::string(40, 'a') + ")"));
}

TEST_F(MenuModelTest, ATranscriptOf41CharactersShows40AndTheEllipsis) {
  startUp();
  dictate(QString(41, u'a'));
  finishPaste();
  EXPECT_THAT(lines(), Contains("(Last: " + std::string(40, 'a') + "…)"));
}

TEST_F(MenuModelTest, TheLastTranscriptIsCopiedWholeAndReported) {
  startUp();
  dictate(QString(60, u'b'));
  finishPaste();
  takeEvents();
  const MenuItem copy = item(u"Copy Last Transcript"_s);
  EXPECT_EQ(copy.shortcut, u"Ctrl+Shift+C"_s);
  copy.action();
  EXPECT_EQ(pastedTexts().back(), QString(60, u'b'));
  EXPECT_THAT(takeEvents(), Contains(testing::StartsWith("transcript_copied")));
}

TEST_F(MenuModelTest, EnableVemoShowsAndSwitchesTheStateAndIsToldOf) {
  startUp();
  EXPECT_TRUE(item(u"Enable Vemo"_s).isChecked);
  changes = 0;
  item(u"Enable Vemo"_s).action();
  EXPECT_FALSE(appState->isEnabled());
  EXPECT_FALSE(item(u"Enable Vemo"_s).isChecked);
  EXPECT_GT(changes, 0);
}

TEST_F(MenuModelTest, BothWindowsOpenFromTheMenu) {
  startUp();
  item(u"Open Vemo Window"_s).action();
  item(u"Settings"_s).action();
  EXPECT_THAT(scenes.takeCalls(), ElementsAre("open main", "open settings"));
}

TEST_F(MenuModelTest, ALanguageRowStoresItsCodeAndIsTickedFromThenOn) {
  startUp();
  const MenuItem languages = item(u"Language: English"_s);
  ASSERT_EQ(languages.children.size(), 25);
  EXPECT_EQ(languages.children[1].text, u"✓ English (English (India / Global))"_s);
  const auto hindi = std::ranges::find(languages.children, u"language hi"_s, &MenuItem::identifier);
  ASSERT_NE(hindi, languages.children.end());
  EXPECT_TRUE(hindi->text.startsWith(u"   Hindi ("_s));
  changes = 0;
  hindi->action();
  EXPECT_EQ(storage.settings.get(keys::dictationLanguage), u"hi"_s);
  EXPECT_EQ(changes, 1);
  for (const MenuItem& row : item(u"Language: Hindi"_s).children)
    EXPECT_EQ(row.text.startsWith(u"✓ "_s), row.identifier == u"language hi"_s);
}

TEST_F(MenuModelTest, AnUnknownLanguageShowsTheDefaultOnesNameAndTicksNoRow) {
  storage.settings.set(keys::dictationLanguage, u"zz"_s);
  startUp();
  for (const MenuItem& row : item(u"Language: English"_s).children)
    EXPECT_TRUE(row.text.startsWith(u"   "_s)) << qPrintable(row.text);
}

TEST_F(MenuModelTest, GrantingAsksForThePermissionAndOpensItsPane) {
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  system.isTrusted = false;
  startUp();
  item(u"Grant Microphone Access…"_s).action();
  item(u"Grant Accessibility Access…"_s).action();
  mainThread.drain();
  EXPECT_THAT(system.openedPanes, Contains(QUrl(QString::fromUtf16(microphonePane))));
  EXPECT_THAT(system.openedPanes, Contains(QUrl(QString::fromUtf16(accessibilityPane))));
}

TEST_F(MenuModelTest, ASignInUnderWayIsShownAndCantBeBegunTwice) {
  configuration.googleClientId = u"77-abc.apps.accounts.example"_s;
  startUp();
  signOut();
  EXPECT_THAT(lines(), Contains("Sign In with Google"));
  item(u"Sign In with Google"_s).action();
  mainThread.drain();
  EXPECT_THAT(lines(), Contains("(Signing in…)"));
  EXPECT_THAT(lines(), Not(Contains("Sign In with Google")));
}

TEST_F(MenuModelTest, SigningOutForgetsTheAccount) {
  startUp();
  item(u"Sign Out"_s).action();
  mainThread.drain();
  EXPECT_FALSE(auth->isSignedIn());
}

TEST_F(MenuModelTest, TheImageFollowsThePhase) {
  startUp();
  EXPECT_EQ(model->statusImage(), u"vemo_icon"_s);
  startRecording();
  EXPECT_EQ(model->statusImage(), u"record.circle"_s);
  http.neverAnswer(dictatePath);
  hear(1.0);
  stopRecording();
  EXPECT_EQ(model->statusImage(), u"waveform.badge.magnifyingglass"_s);
}

TEST_F(MenuModelTest, TheImageOfAPasteAndOfAnErrorAreTheirOwn) {
  startUp();
  http.answer(dictatePath, 200, success(u"hello"_s));
  std::vector<QString> images;
  const auto watching = appState->changed.observe([&] { images.push_back(model->statusImage()); });
  startRecording();
  hear(1.0);
  stopRecording();
  finishPaste();
  EXPECT_THAT(images, Contains(u"waveform.badge.checkmark"_s));
  http.answerAlways(dictatePath, 400);
  startRecording();
  hear(1.0);
  stopRecording();
  EXPECT_EQ(model->statusImage(), u"waveform.badge.exclamationmark"_s);
}

TEST_F(MenuModelTest, EveryItemHasAnIdentifierOfItsOwn) {
  startUp();
  updates = {.isConfigured = true, .pendingVersion = u"2.0"_s};
  QStringList identifiers;
  for (const MenuItem& item : model->items()) {
    identifiers.append(item.identifier);
    for (const MenuItem& child : item.children) identifiers.append(child.identifier);
  }
  EXPECT_THAT(identifiers, Not(Contains(QString())));
  EXPECT_EQ(identifiers.removeDuplicates(), 0);
}

}  // namespace
}  // namespace vemo
