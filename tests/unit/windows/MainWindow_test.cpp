// The main window in each of its states: what it says, that it says it without a complaint, and
// what its keys and buttons do.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <algorithm>

#include "ShownWindow.h"
#include "windows/offline/MainWindowOnFakes.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

constexpr QSize standardSize{860, 620};
constexpr QSize smallestSize{640, 480};

std::unique_ptr<ShownWindow> show(MainWindowOnFakes& offline, QSize size = standardSize,
                                  Brightness brightness = Brightness::Light) {
  auto window =
      std::make_unique<ShownWindow>(u"main/MainWindow.qml"_s, offline.model(), size, brightness);
  offline.model().windowShown();
  offline.pass({});
  window->draw();
  return window;
}

QStringList textsOf(const QString& state) {
  MainWindowOnFakes offline(state);
  return show(offline)->texts();
}

class MainWindowStateTest : public testing::TestWithParam<QString> {};

TEST_P(MainWindowStateTest, IsDrawnWithoutAComplaint) {
  struct Sight {
    QString name;
    QSize size;
    Brightness brightness;
  };
  for (const auto& [name, size, brightness] :
       {Sight{u"light"_s, standardSize, Brightness::Light},
        Sight{u"dark-and-small"_s, smallestSize, Brightness::Dark}}) {
    MainWindowOnFakes offline(GetParam());
    const auto window = show(offline, size, brightness);
    const QImage image = window->draw();
    EXPECT_EQ(image.size(), size);
    EXPECT_THAT(window->complaints(), IsEmpty());
    if (const QString folder = qEnvironmentVariable("VEMO_SCREENSHOTS"); !folder.isEmpty())
      image.save(QDir(folder).filePath(u"%1-%2.png"_s.arg(GetParam(), name)));
  }
}

INSTANTIATE_TEST_SUITE_P(EachState, MainWindowStateTest,
                         testing::ValuesIn(MainWindowOnFakes::states()), [](const auto& info) {
                           return QString(info.param).replace(u'-', u'_').toStdString();
                         });

TEST(MainWindowTest, TheSignInCardSaysWhatItOffers) {
  EXPECT_THAT(textsOf(u"signed-out"_s),
              IsSupersetOf({u"Type Less,"_s, u"Speak more"_s, u"Continue with Google"_s}));
  EXPECT_THAT(textsOf(u"signing-in"_s), IsSupersetOf({u"Signing in…"_s, u"Cancel"_s}));
  EXPECT_THAT(textsOf(u"sign-in-failed"_s), Contains(u"Can't reach the server"_s));
}

TEST(MainWindowTest, TheSidebarHasTheTabsAndTheSettings) {
  EXPECT_THAT(textsOf(u"home-empty"_s), IsSupersetOf({u"Home"_s, u"Stats"_s, u"Dictionary"_s,
                                                      u"Shortcuts"_s, u"Settings"_s}));
}

TEST(MainWindowTest, WhereTextRunsFromRightToLeftEverythingIsTurnedAround) {
  for (const auto& state : MainWindowOnFakes::states()) {
    MainWindowOnFakes offline(state);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    const auto window = show(offline, smallestSize);
    const QImage image = window->draw();
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_THAT(window->complaints(), IsEmpty()) << state.toStdString();
    if (const QString folder = qEnvironmentVariable("VEMO_SCREENSHOTS"); !folder.isEmpty())
      image.save(QDir(folder).filePath(state + u"-right-to-left.png"_s));
    if (!offline.model().isSignedIn() || offline.model().hasOpenSheet()) continue;
    EXPECT_NE(image.pixelColor(smallestSize.width() - 4, 4), image.pixelColor(4, 4));
    EXPECT_EQ(image.pixelColor(smallestSize.width() - 4, 4), QColor(u"#ecedea"_s))
        << "the sidebar is on the right";
  }
}

TEST(MainWindowTest, AnUpdateThatIsReadyHasACardWithItsNotesOnRequest) {
  const auto texts = textsOf(u"update-ready"_s);
  EXPECT_THAT(texts, IsSupersetOf({u"Update ready"_s, u"Vemo 1.5.0"_s, u"Restart to Update"_s,
                                   u"What's new"_s}));
  const auto isNew = [](const QString& text) { return text.contains(u"languages"_s); };
  EXPECT_EQ(std::ranges::count_if(texts, isNew), 0);
  EXPECT_EQ(std::ranges::count_if(textsOf(u"update-notes"_s), isNew), 1);
  EXPECT_THAT(textsOf(u"home-empty"_s), Not(Contains(u"Update ready"_s)));
}

TEST(MainWindowTest, HomeSaysWhatVemoDoesAndHowToBegin) {
  EXPECT_THAT(
      textsOf(u"home-empty"_s),
      IsSupersetOf(
          {u"Hold Either Option (⌥) or tap Fn / Globe to talk into any textbox."_s,
           u"Language: English"_s, u"Talk, don't type"_s, u"Use your voice in any app, instantly"_s,
           u"Smart formatting"_s, u"Punctuation and structure by AI"_s,
           u"Your data, completely secure"_s, u"Start Dictating Now"_s, u"Recent Transcriptions"_s,
           u"No transcriptions yet"_s,
           u"Looks like you haven't dictated anything yet.\nOpen a textbox anywhere and hold "
           u"Either Option (⌥) to get started."_s,
           u"Connect Slack Workspace"_s,
           u"Syncs teammates and channels for instant voice @mentions."_s}));
}

TEST(MainWindowTest, ARecordingReadsAsOne) {
  EXPECT_THAT(textsOf(u"home-recording"_s), IsSupersetOf({u"Stop Dictation"_s, u"Recording"_s}));
}

TEST(MainWindowTest, WhatIsMissingForADictationIsOnTheFirstPage) {
  EXPECT_THAT(textsOf(u"home-permissions"_s),
              IsSupersetOf({u"Microphone Access"_s, u"Accessibility Access"_s, u"Grant Access"_s}));
}

TEST(MainWindowTest, TranscriptionsStandWhereTheHintWas) {
  const auto texts = textsOf(u"home-copied"_s);
  EXPECT_THAT(texts, IsSupersetOf({u"Can you send me the notes from this morning?"_s, u"5m ago"_s,
                                   u"3h ago"_s, u"1d ago"_s, u"Copied"_s,
                                   u"Transcription copied to clipboard"_s}));
  EXPECT_THAT(texts, Not(Contains(u"No transcriptions yet"_s)));
}

TEST(MainWindowTest, TheStatisticsHaveTheirCards) {
  EXPECT_THAT(
      textsOf(u"stats-full"_s),
      IsSupersetOf(
          {u"Stats & Analytics"_s,
           u"Refresh"_s,
           u"Dictation Speed"_s,
           u"141 WPM"_s,
           u"3x Faster"_s,
           u"Time Saved"_s,
           u"54h 55m"_s,
           u"Productivity Boost"_s,
           u"Estimated keyboard typing time eliminated across 184,220 words transcribed."_s,
           u"Voice Audio"_s,
           u"1,310.5"_s,
           u"mins"_s,
           u"Total audio processed"_s,
           u"Total Dictations"_s,
           u"6,142"_s,
           u"sessions"_s,
           u"Completed requests"_s,
           u"Why Dictate?"_s,
           u"Voice"_s,
           u"150 WPM"_s,
           u"Keyboard"_s,
           u"40 WPM"_s,
           u"Speaking is 3x to 4x faster than keyboard typing. Vemo formats punctuation, spelling, "
           u"and structure automatically so you can capture thoughts at the speed of speech."_s}));
}

TEST(MainWindowTest, TheDictionarySaysWhatItIsForAndThatItIsEmpty) {
  EXPECT_THAT(
      textsOf(u"dictionary-empty"_s),
      IsSupersetOf({u"Add New"_s, u"What is dictionary and how to use it?"_s,
                    u"Vemo learns your vocabulary, recognizing specialized terms and correcting "
                    u"errors. Add any word or phrase, and it will transcribe it as you intend."_s,
                    u"Worcestershire"_s, u"No custom dictionary words yet."_s,
                    u"Click '+ Add New' to train Vemo on acronyms, company names, or proper "
                    u"nouns."_s}));
}

TEST(MainWindowTest, WhileTheCloudListLoadsTheDictionarySaysSo) {
  const auto texts = textsOf(u"dictionary-loading"_s);
  EXPECT_THAT(texts, Contains(u"Syncing with cloud database…"_s));
  EXPECT_THAT(texts, Not(Contains(u"No custom dictionary words yet."_s)));
}

TEST(MainWindowTest, TheShortcutsSayWhatTheyAreForAndThatTheyAreEmpty) {
  EXPECT_THAT(textsOf(u"shortcuts-empty"_s),
              IsSupersetOf({u"Add New"_s, u"How to use shortcuts?"_s,
                            u"Shortcuts insert saved text blocks, like email signatures, using "
                            u"trigger phrases. Say \"here's my calendar\" and Vemo types your "
                            u"response."_s,
                            u"Here's my calendar"_s, u"No shortcuts created yet."_s,
                            u"Create trigger phrases that automatically expand into full "
                            u"paragraphs or signatures."_s}));
}

TEST(MainWindowTest, TheSheetForAWordHasTwoFields) {
  EXPECT_THAT(
      textsOf(u"sheet-word"_s),
      IsSupersetOf({u"Add Word to Dictionary"_s,
                    u"Vemo will correct this word whenever you dictate."_s,
                    u"When you say (or common typo)"_s, u"e.g. btw or Worcester or memo"_s,
                    u"Replace with (output text)"_s, u"e.g. By the way or Worcestershire or vemo"_s,
                    u"Cancel"_s, u"Add to Dictionary"_s}));
}

TEST(MainWindowTest, TheSheetForAShortcutHasTwoFields) {
  EXPECT_THAT(
      textsOf(u"sheet-shortcut"_s),
      IsSupersetOf({u"Add Shortcut"_s, u"Say a trigger phrase to expand into longer snippets."_s,
                    u"Trigger Phrase (Say this)"_s,
                    u"e.g. my email address or here's my calendar link"_s,
                    u"Expanded Snippet (Vemo types this)"_s, u"Cancel"_s, u"Save Shortcut"_s}));
}

TEST(MainWindowTest, TheSheetForSlackAsksForATokenAndSaysWhereToGetOne) {
  const auto texts = textsOf(u"sheet-slack"_s);
  EXPECT_THAT(texts,
              IsSupersetOf({u"Connect Slack Workspace"_s,
                            u"Slack User or Bot Token (xoxp-... or xoxb-...)"_s,
                            u"Paste your Slack token here"_s, u"Cancel"_s, u"Connect & Sync"_s}));
  EXPECT_TRUE(texts.join(u' ').contains(u"<b>users:read</b> and <b>channels:read</b>"_s));
  EXPECT_THAT(textsOf(u"sheet-slack-connecting"_s), Contains(u"Connecting..."_s));
  EXPECT_THAT(textsOf(u"sheet-slack-failed"_s), Contains(u"Failed to sync Slack. Check token."_s));
  EXPECT_THAT(textsOf(u"slack-connected"_s), Contains(u"Example Ltd."_s));
}

}  // namespace
}  // namespace vemo
