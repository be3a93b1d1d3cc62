// The settings window in each of its states: what it says, and that it says it without a complaint.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QQmlProperty>
#include <QTest>

#include "ShownWindow.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

constexpr QSize standardSize{760, 640};
constexpr QSize smallestSize{640, 480};
constexpr QSize wholeTab{760, 2000};

std::unique_ptr<ShownWindow> show(SettingsOnFakes& offline, QSize size = standardSize,
                                  Brightness brightness = Brightness::Light) {
  auto window = std::make_unique<ShownWindow>(u"settings/SettingsWindow.qml"_s, offline.model(),
                                              size, brightness);
  offline.pass({});
  window->draw();
  return window;
}

QStringList textsOf(const QString& state) {
  SettingsOnFakes offline(state);
  return show(offline, wholeTab)->texts();
}

/// Null where no button in sight reads so.
QQuickItem* buttonWith(const QString& text, QQuickItem& item) {
  if (!item.isVisible()) return nullptr;
  if (item.inherits("QQuickAbstractButton") && item.property("text") == text) return &item;
  const auto children = item.childItems();
  for (auto* child : children) {
    if (auto* const found = buttonWith(text, *child)) return found;
  }
  return nullptr;
}

/// What follows the pointer over an item; null where nothing does.
const QObject* handlerOf(const QQuickItem& item) {
  for (const QObject* child : item.children()) {
    if (child->inherits("QQuickHoverHandler")) return child;
  }
  return nullptr;
}

void keepPicture(const QImage& image, const QString& name) {
  if (const QString folder = qEnvironmentVariable("VEMO_SCREENSHOTS"); !folder.isEmpty())
    image.save(QDir(folder).filePath(name + u".png"_s));
}

class SettingsWindowStateTest : public testing::TestWithParam<QString> {};

TEST_P(SettingsWindowStateTest, IsDrawnWithoutAComplaint) {
  struct Sight {
    QString name;
    QSize size;
    Brightness brightness;
  };
  for (const auto& [name, size, brightness] :
       {Sight{u"light"_s, standardSize, Brightness::Light},
        Sight{u"dark-and-small"_s, smallestSize, Brightness::Dark},
        Sight{u"whole"_s, wholeTab, Brightness::Light}}) {
    SettingsOnFakes offline(GetParam());
    const auto window = show(offline, size, brightness);
    const QImage image = window->draw();
    EXPECT_EQ(image.size(), size);
    EXPECT_EQ(window->complaints().join(u'\n'), QString());
    keepPicture(image, GetParam() + u'-' + name);
  }
}

TEST_P(SettingsWindowStateTest, IsDrawnFromRightToLeftWithoutAComplaint) {
  SettingsOnFakes offline(GetParam());
  QGuiApplication::setLayoutDirection(Qt::RightToLeft);
  const auto window = show(offline);
  const QImage image = window->draw();
  QGuiApplication::setLayoutDirection(Qt::LeftToRight);
  EXPECT_EQ(window->complaints().join(u'\n'), QString());
  keepPicture(image, GetParam() + u"-right-to-left"_s);
}

INSTANTIATE_TEST_SUITE_P(EachState, SettingsWindowStateTest,
                         testing::ValuesIn(SettingsOnFakes::states()), [](const auto& info) {
                           return QString(info.param).replace(u'-', u'_').toStdString();
                         });

TEST(SettingsWindowTest, TheAccountTabShowsTheProfileAndTheWayToDeleteIt) {
  EXPECT_THAT(
      textsOf(u"settings-account"_s),
      IsSupersetOf({u"First Name"_s, u"Last Name"_s, u"Owner Email"_s, u"Logged in"_s,
                    u"asha.rao@example.org"_s, u"Sign out"_s, u"Delete account"_s,
                    u"Permanently deletes your Vemo account, dictation history, dictionary and "
                    u"usage data."_s,
                    u"Delete Account…"_s}));
}

TEST(SettingsWindowTest, WithNobodySignedInTheCardOffersTheSignIn) {
  const auto texts = textsOf(u"settings-signed-out"_s);
  EXPECT_THAT(texts, IsSupersetOf({u"Not signed in"_s, u"Sign In with Google"_s}));
  EXPECT_THAT(texts, Not(Contains(u"Delete account"_s)));
  EXPECT_THAT(textsOf(u"settings-sign-in-failed"_s), Contains(u"Can't reach the server"_s));
}

TEST(SettingsWindowTest, TheDeletionAsksAndTellsInTheseWords) {
  EXPECT_THAT(
      textsOf(u"settings-delete-dialog"_s),
      IsSupersetOf({u"Delete your Vemo account?"_s,
                    u"Your account, dictation history, dictionary and usage data are deleted "
                    u"permanently. This can't be undone."_s,
                    u"Delete Account"_s}));
  EXPECT_THAT(textsOf(u"settings-deleting"_s), Contains(u"Deleting…"_s));
  EXPECT_THAT(textsOf(u"settings-deleted"_s),
              IsSupersetOf({u"Your account was deleted"_s,
                            u"Thanks for trying Vemo. You can sign in again any time to start a "
                            u"new account."_s}));
  EXPECT_THAT(textsOf(u"settings-not-deleted"_s),
              IsSupersetOf({u"Your account wasn't deleted"_s,
                            u"Couldn't reach Vemo. Check your connection and try again."_s}));
}

TEST(SettingsWindowTest, TheSystemTabHasItsTenSectionsInOrder) {
  const auto texts = textsOf(u"settings-system"_s);
  qsizetype before = -1;
  for (const QString& title :
       {u"Speech & AI Engine"_s, u"Hotkeys"_s, u"App settings"_s, u"Appearance"_s, u"Sound"_s,
        u"Integrations"_s, u"Permissions"_s, u"Updates"_s, u"Privacy"_s}) {
    const qsizetype at = texts.indexOf(title);
    EXPECT_GT(at, before) << title.toStdString();
    before = at;
  }
  EXPECT_GT(texts.indexOf(u"Sign Out"_s), before);
}

TEST(SettingsWindowTest, TheSystemTabSaysWhatEachSettingIs) {
  EXPECT_THAT(
      textsOf(u"settings-system"_s),
      IsSupersetOf({u"Dictation Language"_s,
                    u"Select spoken language or use Auto-Detect across 23 languages."_s,
                    u"English"_s, u"Script / Output Mode"_s,
                    u"Choose whether speech is transcribed to Latin/English or native script."_s,
                    u"English (Translit)"_s, u"Push to talk"_s,
                    u"Hold down the key to speak, release to transcribe & insert text."_s,
                    u"Either Option (⌥)"_s, u"Start / Stop mic"_s,
                    u"Tap once to start recording, tap again to finish and insert text."_s,
                    u"Fn / Globe"_s, u"Launch app at login"_s, u"Show app in dock"_s,
                    u"Dictation pill color"_s, u"Dictation & notification sounds"_s,
                    u"Share usage statistics"_s, u"Signed in: asha.rao@example.org"_s,
                    u"Sign Out"_s}));
}

TEST(SettingsWindowTest, TheIntegrationsSayWhatTheyDo) {
  EXPECT_THAT(textsOf(u"settings-system"_s),
              IsSupersetOf(
                  {u"Preview"_s, u"File tagging in Antigravity, VS Code & Cursor"_s,
                   u"Automatically tag filenames with '@' while dictating in Antigravity, VS Code, "
                   u"Cursor, Windsurf, or Xcode. (Companion extension integration in preview)."_s,
                   u"Tagging in Slack"_s,
                   u"Say 'mention Name' while dictating in Slack to insert an @mention. (Slack "
                   u"integration in preview)."_s,
                   u"Active Codebase Context"_s,
                   u"Auto-indexes the active project in Antigravity, Cursor, VS Code, or Xcode for "
                   u"accurate @file matching."_s,
                   u"0 files indexed in memory for instant @file voice tagging."_s,
                   u"Auto-detect"_s, u"Choose Folder…"_s, u"Rescan"_s, u"Slack Workspace Sync"_s,
                   u"Connect your Slack API Token to sync team member names and channels for 100% "
                   u"accurate @mention and #channel voice insertion."_s,
                   u"Slack integration is currently in preview."_s}));
}

TEST(SettingsWindowTest, PermissionsAreGrantedOrOffered) {
  const auto granted = textsOf(u"settings-system"_s);
  EXPECT_THAT(
      granted,
      IsSupersetOf({u"Microphone Access"_s, u"Required for voice dictation and audio recording"_s,
                    u"Accessibility Access"_s,
                    u"Required to automatically insert transcribed text into textboxes"_s}));
  EXPECT_THAT(granted, Contains(u"Granted"_s));
  EXPECT_THAT(granted, Not(Contains(u"Grant Access"_s)));
  const auto missing = textsOf(u"settings-no-permissions"_s);
  EXPECT_THAT(missing, Contains(u"Grant Access"_s));
  EXPECT_THAT(missing, Not(Contains(u"Granted"_s)));
}

TEST(SettingsWindowTest, UpdatesReadByWhatIsKnownOfThem) {
  EXPECT_THAT(
      textsOf(u"settings-system"_s),
      IsSupersetOf({u"Check for updates automatically"_s, u"Download updates automatically"_s,
                    u"Get beta updates"_s, u"Not checked yet"_s, u"Check for Updates"_s}));
  EXPECT_THAT(textsOf(u"settings-updates-off"_s),
              Contains(u"In-app updates aren't set up in this build."_s));
  EXPECT_THAT(
      textsOf(u"settings-update-ready"_s),
      IsSupersetOf({u"Vemo 1.4.0 is downloaded and ready to install"_s, u"Restart to Update"_s}));
}

TEST(SettingsWindowTest, WhatTheRestartButtonTellsIsToldOverTheDisabledOneToo) {
  SettingsOnFakes offline(u"settings-update-ready"_s);
  const auto window = show(offline, wholeTab);
  QQuickItem* const button = buttonWith(u"Restart to Update"_s, window->root());
  ASSERT_TRUE(button);
  EXPECT_EQ(QQmlProperty::read(button, u"ToolTip.text"_s, qmlContext(button)),
            u"Quit Vemo, install the update and open it again"_s);
  button->setEnabled(false);
  const auto* const pointer = handlerOf(*button);
  ASSERT_TRUE(pointer);
  EXPECT_EQ(pointer->property("hovered"), false);
  QTest::mouseMove(&window->window(),
                   button->mapToScene({button->width() / 2, button->height() / 2}).toPoint());
  window->draw();
  EXPECT_EQ(pointer->property("hovered"), true);
}

TEST(SettingsWindowTest, TheRecorderSaysWhatToDo) {
  EXPECT_THAT(textsOf(u"settings-recorder"_s),
              IsSupersetOf(
                  {u"Record Push-to-Talk Shortcut"_s,
                   u"Press any key, modifier, or combination to hold while speaking."_s,
                   u"Press any key or combination on your keyboard…"_s,
                   u"Supports single keys (F1-F12, Esc, Fn, Right Option, etc.) or chords (e.g. "
                   u"⌘⇧Space, ⌥Space)."_s,
                   u"Quick Presets"_s, u"Fn / Globe"_s, u"Either Option"_s, u"Right Option"_s,
                   u"Control + Space"_s, u"Option + Space"_s, u"Reset to Default"_s, u"Cancel"_s}));
  EXPECT_THAT(textsOf(u"settings-recorded"_s),
              IsSupersetOf({u"Record Start / Stop Shortcut"_s, u"Shift + Command + Space"_s}));
}

TEST(SettingsWindowTest, ARecordedKeyReadsAsCustom) {
  EXPECT_THAT(textsOf(u"settings-custom-keys"_s),
              IsSupersetOf({u"Custom: Control + Shift + F8"_s, u"Hindi"_s}));
}

}  // namespace
}  // namespace vemo
