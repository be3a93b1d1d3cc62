// The settings window by keyboard alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "WindowAtKeyboard.h"
#include "desktop/VirtualKeys.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

constexpr std::int64_t keyF8 = 100;

class SettingsWindowKeyboardTest : public WindowAtKeyboard<SettingsOnFakes> {
 protected:
  void TearDown() override { closeWindow(); }

  void closeWindow() {
    if (window) EXPECT_THAT(window->complaints(), IsEmpty());
    window.reset();
  }

  void show(const QString& state) {
    closeWindow();
    offline.emplace(state);
    window = std::make_unique<ShownWindow>(u"settings/SettingsWindow.qml"_s, offline->model(),
                                           QSize(760, 640));
    window->activate();
    offline->pass({});
    window->draw();
  }

  /// Keys that go to the recorder, as the monitor of the window hands them over.
  void strike(KeyEvent::Type type, std::int64_t keyCode, ModifierFlags modifiers = 0) {
    EXPECT_EQ(offline->keys().strike({type, keyCode, modifiers}),
              LocalKeyMonitor::Handling::Swallow);
    offline->pass({});
    window->draw();
  }

  /// A key that the window gets only where the recorder leaves it to the window.
  void pressAtRecorder(Qt::Key key, std::int64_t keyCode) {
    const bool isForWindow = offline->keys().strike({KeyEvent::Type::KeyDown, keyCode}) ==
                             LocalKeyMonitor::Handling::PassOn;
    offline->keys().strike({KeyEvent::Type::KeyUp, keyCode});
    if (isForWindow) press(key);
    offline->pass({});
    window->draw();
  }

  SettingsModel& model() { return offline->model(); }
};

TEST_F(SettingsWindowKeyboardTest, EveryStopOfTheTabKeyHasAName) {
  for (const auto& state : SettingsOnFakes::states()) {
    show(state);
    const auto stops = tabStops();
    EXPECT_FALSE(stops.isEmpty()) << state.toStdString();
    EXPECT_THAT(stops, Not(Contains(QString()))) << state.toStdString();
  }
}

TEST_F(SettingsWindowKeyboardTest, TheCommandsOfTheProgramHaveTheirKeysInBothTabs) {
  for (const auto& state : {u"settings-account"_s, u"settings-system"_s}) {
    show(state);
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(offline->quits(), 1);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->window().isVisible());
  }
}

TEST_F(SettingsWindowKeyboardTest, AShortcutIsRecordedAndSavedByHoldingIt) {
  show(u"settings-system"_s);
  walkTo(u"Record a shortcut: Start / Stop mic"_s);
  press(Qt::Key_Space);
  ASSERT_TRUE(model().recorder()->isOpen());
  strike(KeyEvent::Type::KeyDown, keyF8, ControlFlag);
  EXPECT_THAT(window->texts(), Contains(model().recorder()->recordedName()));
  offline->pass(ShortcutRecorder::holdToConfirm);
  window->draw();
  EXPECT_FALSE(model().recorder()->isOpen());
  EXPECT_TRUE(model().system()->selectedToggleHotkey().startsWith(u"Custom: "));
  EXPECT_THAT(window->texts(), Contains(model().system()->selectedToggleHotkey()));
}

TEST_F(SettingsWindowKeyboardTest, EscapeLeadsOutOfTheRecorderAndTheKeyboardIsWhereItWas) {
  show(u"settings-system"_s);
  walkTo(u"Record a shortcut: Push to talk"_s);
  press(Qt::Key_Return);
  ASSERT_TRUE(model().recorder()->isOpen());
  strike(KeyEvent::Type::KeyDown, kEscape);
  EXPECT_FALSE(model().recorder()->isOpen());
  EXPECT_EQ(focusText(), u"Record a shortcut: Push to talk"_s);
}

TEST_F(SettingsWindowKeyboardTest, ThePresetsOfTheRecorderAreReachedAndAppliedByKeyboard) {
  show(u"settings-system"_s);
  walkTo(u"Record a shortcut: Start / Stop mic"_s);
  press(Qt::Key_Space);
  ASSERT_TRUE(model().recorder()->isOpen());
  const QStringList buttons{
      u"Fn / Globe"_s,     u"Either Option"_s,    u"Right Option"_s, u"Control + Space"_s,
      u"Option + Space"_s, u"Reset to Default"_s, u"Cancel"_s,       u"Save"_s};
  for (const auto& button : buttons) {
    pressAtRecorder(Qt::Key_Tab, kTab);
    EXPECT_EQ(focusText(), button);
  }
  while (focusText() != u"Right Option"_s && model().recorder()->isOpen())
    press(Qt::Key_Tab, Qt::ShiftModifier);
  pressAtRecorder(Qt::Key_Return, kReturn);
  EXPECT_FALSE(model().recorder()->isOpen());
  EXPECT_EQ(model().system()->selectedToggleHotkey(), u"Right Option (⌥)"_s);
  EXPECT_EQ(focusText(), u"Record a shortcut: Start / Stop mic"_s);
}

TEST_F(SettingsWindowKeyboardTest, AKeyAtThePresetsOfTheRecorderIsRecorded) {
  show(u"settings-system"_s);
  walkTo(u"Record a shortcut: Start / Stop mic"_s);
  press(Qt::Key_Space);
  pressAtRecorder(Qt::Key_Tab, kTab);
  ASSERT_EQ(focusText(), u"Fn / Globe"_s);
  pressAtRecorder(Qt::Key_F8, keyF8);
  EXPECT_EQ(model().recorder()->recordedName(), u"F8"_s);
  EXPECT_EQ(focusText(), u"F8"_s);
  pressAtRecorder(Qt::Key_Space, kSpace);
  EXPECT_EQ(model().recorder()->recordedName(), u"Space"_s);
  EXPECT_TRUE(model().recorder()->isOpen());
}

TEST_F(SettingsWindowKeyboardTest, TabGoesOnFromAButtonThatItsPressPutOutOfUse) {
  for (const auto& [modifiers, next] :
       {std::pair(Qt::NoModifier, u"Delete Account…"_s),
        std::pair(Qt::ShiftModifier, u"Owner Email: asha.rao@example.org"_s)}) {
    show(u"settings-unsaved"_s);
    walkTo(u"Save"_s);
    press(Qt::Key_Return);
    ASSERT_FALSE(model().account()->canSave());
    ASSERT_NE(focusText(), u"Save"_s);
    press(Qt::Key_Tab, modifiers);
    EXPECT_EQ(focusText(), next);
    press(Qt::Key_Tab, modifiers);
    EXPECT_NE(focusText(), next) << "and from there on as ever";
  }
}

TEST_F(SettingsWindowKeyboardTest, ASwitchIsTurnedByTheSpaceBar) {
  show(u"settings-system"_s);
  const bool wasOn = model().system()->dictationSounds();
  walkTo(u"Dictation & notification sounds"_s);
  press(Qt::Key_Space);
  EXPECT_NE(model().system()->dictationSounds(), wasOn);
}

}  // namespace
}  // namespace vemo
