// The main window by keyboard alone, and what assistive tools are told of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QTest>

#include "WindowAtKeyboard.h"
#include "windows/offline/MainWindowOnFakes.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

class MainWindowKeyboardTest : public WindowAtKeyboard<MainWindowOnFakes> {
 protected:
  void TearDown() override { closeWindow(); }

  void closeWindow() {
    if (window) EXPECT_THAT(window->complaints(), IsEmpty());
    window.reset();
  }

  void show(const QString& state) {
    closeWindow();
    offline.emplace(state);
    window =
        std::make_unique<ShownWindow>(u"main/MainWindow.qml"_s, offline->model(), QSize(860, 620));
    window->activate();
    offline->model().windowShown();
    offline->pass({});
    window->draw();
  }

  void type(const QString& text) {
    for (const QChar character : text) QTest::keyClick(&window->window(), character.toLatin1());
    window->draw();
  }

  MainWindowModel& model() { return offline->model(); }
};

TEST_F(MainWindowKeyboardTest, EveryStopOfTheTabKeyHasAName) {
  for (const auto& state : MainWindowOnFakes::states()) {
    show(state);
    const auto stops = tabStops();
    EXPECT_FALSE(stops.isEmpty()) << state.toStdString();
    EXPECT_THAT(stops, Not(Contains(QString()))) << state.toStdString();
  }
}

TEST_F(MainWindowKeyboardTest, WhatAScreenReaderPressesDoesWhatAClickDoes) {
  show(u"dictionary-full"_s);
  for (auto* item : window->window().contentItem()->findChildren<QQuickItem*>()) {
    auto* accessible = QAccessible::queryAccessibleInterface(item);
    if (!accessible || accessible->text(QAccessible::Name) != u"Add New") continue;
    ASSERT_TRUE(accessible->actionInterface());
    accessible->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    break;
  }
  offline->pass({});
  window->draw();
  EXPECT_THAT(window->texts(), Contains(u"When you say (or common typo)"_s));
}

TEST_F(MainWindowKeyboardTest, WhatCanHaveTheKeyboardHasANameARoleAndSomethingToDo) {
  for (const auto& state : MainWindowOnFakes::states()) {
    show(state);
    int found = 0;
    for (auto* item : window->window().contentItem()->findChildren<QQuickItem*>()) {
      auto* accessible = QAccessible::queryAccessibleInterface(item);
      if (!item->isVisible() || !item->activeFocusOnTab()) continue;
      ASSERT_TRUE(accessible);
      ++found;
      const auto about = state.toStdString() + ": " + item->metaObject()->className();
      EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty()) << about;
      EXPECT_NE(accessible->role(), QAccessible::NoRole) << about;
      EXPECT_NE(accessible->role(), QAccessible::Client) << about;
      EXPECT_TRUE(accessible->actionInterface() || accessible->valueInterface() ||
                  accessible->textInterface())
          << about;
    }
    EXPECT_GT(found, 0) << state.toStdString();
  }
}

TEST_F(MainWindowKeyboardTest, TabReachesEveryControlOfHome) {
  show(u"home-permissions"_s);
  const auto stops = tabStops();
  for (const auto& name :
       {u"Home"_s, u"Stats"_s, u"Dictionary"_s, u"Shortcuts"_s, u"Settings"_s,
        u"Language: English"_s, u"Grant Access"_s, u"Start Dictating Now"_s, u"Connect…"_s})
    EXPECT_THAT(stops, Contains(name));
}

TEST_F(MainWindowKeyboardTest, ArrowsWalkThroughTheSidebar) {
  show(u"home-empty"_s);
  walkTo(u"Home"_s);
  press(Qt::Key_Down);
  EXPECT_EQ(model().tab(), u"stats"_s);
  press(Qt::Key_Up);
  press(Qt::Key_Up);
  EXPECT_EQ(model().tab(), u"shortcuts"_s) << "from the first to the last";
}

TEST_F(MainWindowKeyboardTest, ALanguageIsChosenFromTheMenu) {
  show(u"home-empty"_s);
  walkTo(u"Language: English"_s);
  press(Qt::Key_Space);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(model().home()->languageTitle(), u"Language: Hinglish"_s);
  EXPECT_EQ(focusText(), u"Language: Hinglish"_s) << "the keyboard is where it was";
}

TEST_F(MainWindowKeyboardTest, WhatThePanelsMenuOffersIsReachedFromTheWindow) {
  show(u"home-empty"_s);
  walkTo(u"Vemo menu"_s);
  press(Qt::Key_Space);
  EXPECT_THAT(window->texts(), IsSupersetOf({u"Ready"_s, u"✓ Enable Vemo"_s, u"Quit Vemo"_s}));
  EXPECT_THAT(window->texts(), Not(Contains(u"Open Vemo Window"_s))) << "it is here";
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_THAT(window->texts(), Not(Contains(u"Quit Vemo"_s))) << "the menu has closed";
  walkTo(u"Vemo menu"_s);
  press(Qt::Key_Space);
  EXPECT_THAT(window->texts(), Contains(u"Enable Vemo"_s)) << "which is off now";
}

TEST_F(MainWindowKeyboardTest, TheCommandsOfTheProgramHaveTheirKeys) {
  for (const auto& state : {u"signed-out"_s, u"home-empty"_s}) {
    show(state);
    press(Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_TRUE(offline->scenes().isOpen(Scene::Settings));
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(offline->quits(), 1);
  }
}

TEST_F(MainWindowKeyboardTest, ControlWClosesTheWindow) {
  for (const auto& state : {u"signed-out"_s, u"home-empty"_s}) {
    show(state);
    ASSERT_TRUE(window->window().isVisible());
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->window().isVisible()) << state.toStdString();
  }
}

TEST_F(MainWindowKeyboardTest, TheLastTranscriptIsCopiedByTheKeyThatTheMenuNames) {
  show(u"home-full"_s);
  press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(offline->copiedText(), u"Can you send me the notes from this morning?"_s);
}

TEST_F(MainWindowKeyboardTest, AWordIsAddedAndEnterSavesIt) {
  show(u"dictionary-empty"_s);
  walkTo(u"Add New"_s);
  press(Qt::Key_Return);
  EXPECT_EQ(focusText(), u"When you say (or common typo)"_s);
  type(u"btw"_s);
  press(Qt::Key_Tab);
  EXPECT_EQ(focusText(), u"Replace with (output text)"_s);
  type(u"by the way"_s);
  press(Qt::Key_Return);
  EXPECT_FALSE(model().hasOpenSheet());
  ASSERT_EQ(model().dictionary()->rows()->count(), 1);
  EXPECT_EQ(model().dictionary()->rows()->rows().front().spoken, u"btw"_s);
  EXPECT_EQ(model().dictionary()->rows()->rows().front().written, u"by the way"_s);
}

TEST_F(MainWindowKeyboardTest, WhoChangesAWordWritesOnAtItsEnd) {
  show(u"sheet-word-typed"_s);
  walkTo(u"When you say (or common typo)"_s);
  const QString before = model().dictionary()->sheet()->spoken();
  type(u"s"_s);
  EXPECT_EQ(model().dictionary()->sheet()->spoken(), before + u's');
}

TEST_F(MainWindowKeyboardTest, AShortcutOfSeveralLinesIsAdded) {
  show(u"sheet-shortcut"_s);
  walkTo(u"Trigger Phrase (Say this)"_s);
  type(u"sign off"_s);
  press(Qt::Key_Tab);
  EXPECT_EQ(focusText(), u"Expanded Snippet (Vemo types this)"_s);
  type(u"Best,"_s);
  press(Qt::Key_Return);
  type(u"Maria"_s);
  walkTo(u"Save Shortcut"_s);
  press(Qt::Key_Return);
  ASSERT_EQ(model().shortcuts()->rows()->count(), 1);
  EXPECT_EQ(model().shortcuts()->rows()->rows().front().written, u"Best,\nMaria"_s);
}

TEST_F(MainWindowKeyboardTest, EscapeDismissesASheetWithoutSaving) {
  show(u"sheet-word"_s);
  walkTo(u"When you say (or common typo)"_s);
  type(u"btw"_s);
  press(Qt::Key_Escape);
  EXPECT_FALSE(model().hasOpenSheet());
  model().dictionary()->sheet()->open();
  EXPECT_EQ(model().dictionary()->sheet()->spoken(), QString());
}

TEST_F(MainWindowKeyboardTest, AfterASheetTheKeyboardIsWhereItWas) {
  show(u"dictionary-empty"_s);
  walkTo(u"Add New"_s);
  press(Qt::Key_Return);
  ASSERT_TRUE(model().hasOpenSheet());
  press(Qt::Key_Escape);
  EXPECT_EQ(focusText(), u"Add New"_s);
}

TEST_F(MainWindowKeyboardTest, TabStaysInsideASheet) {
  show(u"sheet-slack"_s);
  const auto stops = tabStops();
  EXPECT_THAT(stops, Contains(u"Cancel"_s));
  EXPECT_THAT(stops, Not(Contains(u"Settings"_s)));
}

TEST_F(MainWindowKeyboardTest, AllSheetsGoAtOnceWhenTheyAreToldTo) {
  for (const auto& state : {u"sheet-word-typed"_s, u"sheet-shortcut"_s, u"sheet-slack-failed"_s}) {
    show(state);
    EXPECT_THAT(window->texts(), Contains(u"Cancel"_s));
    model().closeSheets();
    window->draw();
    EXPECT_THAT(window->texts(), Not(Contains(u"Cancel"_s))) << state.toStdString();
  }
}

TEST_F(MainWindowKeyboardTest, AListOfThousandsIsThreeStopsAndArrowsWalkThroughIt) {
  show(u"dictionary-5000"_s);
  walkTo(u"Add New"_s);
  press(Qt::Key_Tab);
  EXPECT_EQ(focusText(), u"btw, written as By the way"_s);
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  EXPECT_EQ(focusText(), u"coober netties, written as Kubernetes"_s);
  press(Qt::Key_Tab);
  EXPECT_EQ(focusText(), u"Edit coober netties"_s);
  press(Qt::Key_Tab);
  EXPECT_EQ(focusText(), u"Delete coober netties"_s);
  press(Qt::Key_Tab);
  EXPECT_FALSE(focusText().contains(u"written as"_s)) << "no other row is a stop";
}

TEST_F(MainWindowKeyboardTest, DeleteDeletesTheRowAndTheKeyboardStaysInTheList) {
  show(u"dictionary-5000"_s);
  walkTo(u"Add New"_s);
  press(Qt::Key_Tab);
  press(Qt::Key_Down);
  press(Qt::Key_Delete);
  EXPECT_EQ(model().dictionary()->rows()->count(), 4999);
  EXPECT_FALSE(model().dictionary()->rows()->find(u"1"_s));
  EXPECT_EQ(focusText(), u"coober netties, written as Kubernetes"_s);
  press(Qt::Key_Return);
  EXPECT_TRUE(model().dictionary()->sheet()->isEditing());
  EXPECT_EQ(model().dictionary()->sheet()->spoken(), u"coober netties"_s);
}

TEST_F(MainWindowKeyboardTest, OnlyTheRowsThatCanBeSeenAreMade) {
  show(u"dictionary-5000"_s);
  EXPECT_LT(window->root().findChildren<QQuickItem*>().size(), 1500);
  EXPECT_THAT(window->complaints(), IsEmpty());
}

TEST_F(MainWindowKeyboardTest, ATranscriptionIsCopied) {
  show(u"home-full"_s);
  walkTo(u"Copy"_s);
  press(Qt::Key_Space);
  EXPECT_EQ(focusText(), u"Copied"_s);
  EXPECT_EQ(offline->copiedText(), u"Can you send me the notes from this morning?"_s);
  EXPECT_THAT(window->texts(), Contains(u"Transcription copied to clipboard"_s));
}

}  // namespace
}  // namespace vemo
