// The recorder's presets and buttons by keyboard alone, though any key is recorded.
#include <gtest/gtest.h>

#include "ShortcutRecorderFixture.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;

using ShortcutRecorderButtonsTest = ShortcutRecorderTest;

TEST_F(ShortcutRecorderButtonsTest, TabLetGoLeadsToTheButtonsAndStaysRecorded) {
  recorder.openForPushToTalk();
  EXPECT_EQ(keyDownInWindow(kTab), Handling::Swallow);
  EXPECT_FALSE(recorder.isAtButtons());
  keyUpInWindow(kTab);
  EXPECT_TRUE(recorder.isAtButtons());
  EXPECT_EQ(recorder.recordedName(), u"Tab"_s);
}

TEST_F(ShortcutRecorderButtonsTest, TabIsSavedByHoldingItLikeAnyKey) {
  recorder.openForPushToTalk();
  keyDownInWindow(kTab);
  clock.advance(2s);
  expectClosed();
  EXPECT_EQ(pushToTalk(), u"custom"_s);
}

TEST_F(ShortcutRecorderButtonsTest, NoOtherKeyLeadsToTheButtons) {
  recorder.openForPushToTalk();
  keyDownInWindow(kF8);
  keyUpInWindow(kF8);
  keyDownInWindow(kTab, ControlFlag);
  keyUpInWindow(kTab, ControlFlag);
  keyUpInWindow(kTab);
  EXPECT_FALSE(recorder.isAtButtons());
}

TEST_F(ShortcutRecorderButtonsTest, AtTheButtonsTheirKeysGoToTheWindow) {
  recorder.openForPushToTalk();
  keyDownInWindow(kTab);
  keyUpInWindow(kTab);
  for (const auto key : {kTab, kSpace, kReturn, kKeypadEnter}) {
    EXPECT_EQ(keyDownInWindow(key), Handling::PassOn) << key;
    EXPECT_EQ(keyUpInWindow(key), Handling::PassOn) << key;
  }
  EXPECT_EQ(flagsInWindow(kLeftShift, ShiftFlag), Handling::PassOn);
  EXPECT_EQ(keyDownInWindow(kTab, ShiftFlag), Handling::PassOn);
  EXPECT_EQ(flagsInWindow(kLeftShift, 0), Handling::PassOn);
  EXPECT_TRUE(recorder.isAtButtons());
  EXPECT_EQ(recorder.recordedName(), u"Tab"_s);
}

TEST_F(ShortcutRecorderButtonsTest, AnyOtherKeyAtTheButtonsIsRecorded) {
  recorder.openForPushToTalk();
  for (const auto modifiers : {ModifierFlags{}, ModifierFlags{ControlFlag}}) {
    keyDownInWindow(kTab);
    keyUpInWindow(kTab);
    ASSERT_TRUE(recorder.isAtButtons());
    EXPECT_EQ(keyDownInWindow(modifiers ? kSpace : kF8, modifiers), Handling::Swallow);
    EXPECT_FALSE(recorder.isAtButtons());
  }
  EXPECT_EQ(recorder.recordedName(), u"Control + Space (⌃␣)"_s);
}

TEST_F(ShortcutRecorderButtonsTest, EscAtTheButtonsCancels) {
  recorder.openForPushToTalk();
  keyDownInWindow(kTab);
  keyUpInWindow(kTab);
  EXPECT_EQ(keyDownInWindow(kEscape), Handling::Swallow);
  expectClosed();
  EXPECT_FALSE(recorder.isAtButtons());
}

TEST_F(ShortcutRecorderButtonsTest, TheWindowGivesTheKeyboardBackToTheRecording) {
  recorder.openForPushToTalk();
  keyDownInWindow(kTab);
  keyUpInWindow(kTab);
  recorder.leaveButtons();
  EXPECT_EQ(keyDownInWindow(kSpace), Handling::Swallow);
  EXPECT_EQ(recorder.recordedName(), u"Space"_s);
}

}  // namespace
}  // namespace vemo
