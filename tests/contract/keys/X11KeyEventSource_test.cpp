// The X server's keys: several keyboards, keyboards that go, grabs, and Vemo's own keys.
#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <span>

#include "KeyListener.h"
#include "contract/x11/PrivateServer.h"
#include "contract/x11/TestKeyboard.h"
#include "contract/x11/TestWindow.h"
#include "contract/x11/VirtualUser.h"
#include "platform/x11/X11KeyEventSource.h"
#include "platform/x11/X11KeyPoster.h"
#include "platform/x11/X11LoneModifier.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class X11KeyEventSourceTest : public testing::Test {
 protected:
  X11KeyEventSourceTest() { EXPECT_TRUE(source.start()); }

  void tap(xkb_keysym_t key) {
    user.press(key);
    user.release(key);
  }
  void paste() {
    const auto keystroke = poster->makePaste();
    ASSERT_TRUE(keystroke);
    keystroke->press();
    keystroke->release();
  }

  /// Held keys are compared with the server's when keyboards come and go, as they are each second.
  void makeItCompare() {
    TestKeyboard::plugIn();
    listener.catchUp();
    listener.catchUp();
  }

  EventLoop loop;
  VirtualUser user;
  std::unique_ptr<X11KeyPoster> poster = X11KeyPoster::create();
  X11KeyEventSource source{poster->keyboard()->connection().window()};
  KeyListener listener{source};
  const xcb_keycode_t leftAlt = user.codeOf(XKB_KEY_Alt_L);
  const xcb_keycode_t letterA = user.codeOf(XKB_KEY_a);
};

TEST_F(X11KeyEventSourceTest, TheApplicationInFrontSeesEveryKey) {
  TestWindow target;
  ASSERT_TRUE(EventLoop::runUntil([&] { return target.hasFocus(); }));
  tap(XKB_KEY_a);
  ASSERT_TRUE(EventLoop::runUntil([&] { return target.keyEvents().size() == 2; }));
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(0), keyUp(0)));
}

TEST_F(X11KeyEventSourceTest, KeysAreHeardWhileAnotherProgramHasGrabbedTheKeyboard) {
  const auto locker = X11Connection::create();
  const auto grab = locker->reply<xcb_grab_keyboard_reply_t>(
      xcb_grab_keyboard(locker->xcb(), 0, locker->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                        XCB_GRAB_MODE_ASYNC)
          .sequence);
  ASSERT_TRUE(grab);
  ASSERT_EQ(grab->status, XCB_GRAB_STATUS_SUCCESS);
  tap(XKB_KEY_Alt_L);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
}

TEST_F(X11KeyEventSourceTest, AHeldKeyThatRepeatsIsToldOnce) {
  user.press(XKB_KEY_a);
  user.press(XKB_KEY_a);
  user.press(XKB_KEY_a);
  user.release(XKB_KEY_a);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(0), keyUp(0)));
}

TEST_F(X11KeyEventSourceTest, AModifierHeldOnTwoKeyboardsIsHeldUntilBothAreUp) {
  const auto second = TestKeyboard::builtIn();
  ASSERT_TRUE(second);
  user.press(XKB_KEY_Alt_L);
  second->press(leftAlt);
  user.release(XKB_KEY_Alt_L);
  EXPECT_EQ(source.modifierFlags(), OptionFlag);
  second->release(leftAlt);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, OptionFlag),
                          flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
}

TEST_F(X11KeyEventSourceTest, AModifierOnOneKeyboardIsInTheFlagsOfAKeyOnAnother) {
  const auto second = TestKeyboard::builtIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  tap(XKB_KEY_a);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(flagsChanged(58, OptionFlag),
                                                 keyDown(0, OptionFlag), keyUp(0, OptionFlag)));
}

TEST_F(X11KeyEventSourceTest, AKeyboardPluggedInLaterIsHeard) {
  const auto second = TestKeyboard::plugIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  second->press(letterA);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), keyDown(0, OptionFlag)));
  EXPECT_EQ(source.modifierFlags(), OptionFlag);
}

TEST_F(X11KeyEventSourceTest, AKeyHeldOnAKeyboardThatIsUnpluggedGoesUp) {
  const auto second = TestKeyboard::plugIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  second->unplug();
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
  tap(XKB_KEY_a);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(0), keyUp(0)));
}

TEST_F(X11KeyEventSourceTest, AKeyboardUnpluggedWithNothingHeldInterruptsNothing) {
  const auto second = TestKeyboard::plugIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  second->release(leftAlt);
  second->unplug();
  user.press(XKB_KEY_Alt_L);
  listener.catchUp();
  EXPECT_EQ(listener.interruptions, 0);
  EXPECT_EQ(source.modifierFlags(), OptionFlag);
}

/// As all keyboards are when another session comes to the screen.
TEST_F(X11KeyEventSourceTest, AKeyHeldOnAKeyboardThatIsSwitchedOffGoesUp) {
  const auto second = TestKeyboard::builtIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  second->switchOn(false);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
  second->switchOn(true);
  second->press(letterA);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(0)));
}

TEST_F(X11KeyEventSourceTest, AKeyHeldOnAKeyboardThatIsDetachedGoesUp) {
  const auto second = TestKeyboard::builtIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  second->attach(false);
  second->release(leftAlt);
  second->attach(true);
  second->press(letterA);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0), keyDown(0)));
}

TEST_F(X11KeyEventSourceTest, AKeyThatTheServerDoesNotHoldInterruptsOnce) {
  user.press(XKB_KEY_Shift_L);
  user.useSlowKeys(true);
  user.press(XKB_KEY_Alt_L);
  ASSERT_EQ(source.modifierFlags(), OptionFlag | ShiftFlag);
  ASSERT_TRUE(listener.waitForInterruptions(1));
  EXPECT_EQ(source.modifierFlags(), ShiftFlag);
  user.useSlowKeys(false);
  user.release(XKB_KEY_Alt_L);
  user.release(XKB_KEY_Shift_L);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(56, ShiftFlag), flagsChanged(58, OptionFlag | ShiftFlag),
                          flagsChanged(56, 0)));
  EXPECT_EQ(listener.interruptions, 1);
}

TEST_F(X11KeyEventSourceTest, KeysThatTheServerHoldsAreNotLost) {
  const auto second = TestKeyboard::builtIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  user.press(XKB_KEY_Shift_L);
  makeItCompare();
  EXPECT_EQ(listener.interruptions, 0);
  EXPECT_EQ(source.modifierFlags(), OptionFlag | ShiftFlag);
}

TEST_F(X11KeyEventSourceTest, AConnectionThatBreaksInterruptsAndIsMadeAgain) {
  PrivateServer server;
  X11KeyEventSource doomed(XCB_WINDOW_NONE, server.display());
  KeyListener ear(doomed);
  ASSERT_TRUE(doomed.start());
  server.kill();
  ASSERT_TRUE(ear.waitForInterruptions(1));
  EXPECT_EQ(doomed.modifierFlags(), 0U);
  EXPECT_FALSE(doomed.start());
  server.restart();
  EXPECT_TRUE(EventLoop::runUntil([&] { return doomed.start(); }));
  EXPECT_EQ(ear.interruptions, 1);
  server.strikeKey(letterA);
  EXPECT_TRUE(EventLoop::runUntil([&] { return ear.events.size() == 2; }));
}

TEST_F(X11KeyEventSourceTest, AConnectionThatBreaksComesBackByItself) {
  PrivateServer server;
  X11KeyEventSource doomed(XCB_WINDOW_NONE, server.display());
  KeyListener ear(doomed);
  ASSERT_TRUE(doomed.start());
  server.kill();
  ASSERT_TRUE(ear.waitForInterruptions(1));
  server.restart();
  EXPECT_TRUE(EventLoop::runUntil([&] {
    server.strikeKey(letterA);
    return !ear.events.empty();
  }));
}

TEST_F(X11KeyEventSourceTest, AStoppedSourceTellsOfNoInterruption) {
  PrivateServer server;
  X11KeyEventSource doomed(XCB_WINDOW_NONE, server.display());
  KeyListener ear(doomed);
  ASSERT_TRUE(doomed.start());
  doomed.stop();
  server.kill();
  EXPECT_TRUE(EventLoop::runUntil([&] { return !doomed.start(); }));
  EXPECT_EQ(ear.interruptions, 0);
}

/// Breaks the connection that made the newest window, as a desktop may do with a client.
void breakNewestConnection() {
  const auto connection = X11Connection::create();
  const auto tree = connection->reply<xcb_query_tree_reply_t>(
      xcb_query_tree(connection->xcb(), connection->root()).sequence);
  ASSERT_TRUE(tree);
  const std::span windows(xcb_query_tree_children(tree.get()), tree->children_len);
  const auto newest = std::ranges::find(windows, connection->window()) - 1;
  xcb_kill_client(connection->xcb(), *newest);
  connection->synchronize();
}

TEST_F(X11KeyEventSourceTest, AConnectionThatAloneIsBrokenIsMadeAgain) {
  X11KeyEventSource second;
  KeyListener ear(second);
  ASSERT_TRUE(second.start());
  user.press(XKB_KEY_Alt_L);
  ASSERT_EQ(second.modifierFlags(), OptionFlag);
  breakNewestConnection();
  ASSERT_TRUE(ear.waitForInterruptions(1));
  ASSERT_TRUE(EventLoop::runUntil([&] { return second.modifierFlags() == OptionFlag; }));
  user.release(XKB_KEY_Alt_L);
  EXPECT_THAT(ear.takeEvents(), ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
  EXPECT_EQ(ear.interruptions, 1);
  EXPECT_EQ(listener.interruptions, 0);
}

TEST_F(X11KeyEventSourceTest, AStoppedSourceStaysStoppedThoughItsConnectionBreak) {
  X11KeyEventSource second;
  KeyListener ear(second);
  ASSERT_TRUE(second.start());
  second.stop();
  breakNewestConnection();
  tap(XKB_KEY_a);
  ear.catchUp();
  ear.catchUp();
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(0), keyUp(0)));
  EXPECT_THAT(ear.events, IsEmpty());
  EXPECT_EQ(ear.interruptions, 0);
  ASSERT_TRUE(second.start());
  tap(XKB_KEY_a);
  EXPECT_THAT(ear.takeEvents(), ElementsAre(keyDown(0), keyUp(0)));
}

TEST_F(X11KeyEventSourceTest, ItCanListenAsLongAsThereIsAServer) {
  PrivateServer server;
  X11KeyEventSource doomed(XCB_WINDOW_NONE, server.display());
  KeyListener ear(doomed);
  EXPECT_TRUE(doomed.canListen());
  server.kill();
  EXPECT_TRUE(EventLoop::runUntil([&] { return !doomed.canListen(); }));
  server.restart();
  EXPECT_TRUE(EventLoop::runUntil([&] { return doomed.canListen(); }));
  ASSERT_TRUE(doomed.start());
  EXPECT_TRUE(doomed.canListen());
  server.strikeKey(letterA);
  EXPECT_TRUE(EventLoop::runUntil([&] { return ear.events.size() == 2; }));
}

TEST_F(X11KeyEventSourceTest, WithoutAServerItDoesNotStart) {
  X11KeyEventSource nowhere(XCB_WINDOW_NONE, ":9876");
  EXPECT_FALSE(nowhere.canListen());
  EXPECT_FALSE(nowhere.start());
  EXPECT_EQ(nowhere.modifierFlags(), 0U);
  nowhere.stop();
}

// Vemo's own keys

TEST_F(X11KeyEventSourceTest, APasteIsNotHeard) {
  paste();
  EXPECT_THAT(listener.takeEvents(), IsEmpty());
  EXPECT_EQ(source.modifierFlags(), 0U);
}

TEST_F(X11KeyEventSourceTest, AnotherProgramsPostedKeysAreHeardBetweenPastes) {
  for (int round = 0; round < 20; ++round) {
    paste();
    user.press(XKB_KEY_Control_L);
    tap(XKB_KEY_v);
    user.release(XKB_KEY_Control_L);
    EXPECT_THAT(listener.takeEvents(),
                ElementsAre(flagsChanged(59, ControlFlag), keyDown(9, ControlFlag),
                            keyUp(9, ControlFlag), flagsChanged(59, 0)));
  }
}

TEST_F(X11KeyEventSourceTest, AModifierHeldThroughAPasteStaysHeldForTheListener) {
  const auto second = TestKeyboard::builtIn();
  ASSERT_TRUE(second);
  second->press(leftAlt);
  user.press(XKB_KEY_Super_L);
  listener.takeEvents();
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  EXPECT_EQ(source.modifierFlags(), OptionFlag | CommandFlag);
  // A look at the server's own list of keys meanwhile must not take the lifted ones for lost.
  makeItCompare();
  EXPECT_EQ(listener.interruptions, 0);
  keystroke->release();
  EXPECT_EQ(source.modifierFlags(), OptionFlag | CommandFlag);
  EXPECT_THAT(listener.takeEvents(), IsEmpty());
  user.release(XKB_KEY_Super_L);
  second->release(leftAlt);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(55, OptionFlag), flagsChanged(58, 0)));
  EXPECT_EQ(listener.interruptions, 0);
}

TEST_F(X11KeyEventSourceTest, AModifierLetGoDuringAPasteIsHeardToGoUp) {
  user.press(XKB_KEY_Alt_L);
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  user.release(XKB_KEY_Alt_L);
  keystroke->release();
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
}

TEST_F(X11KeyEventSourceTest, TheChordsOwnKeyLetGoDuringAPasteIsHeardToGoUp) {
  user.press(XKB_KEY_v);
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  user.release(XKB_KEY_v);
  keystroke->release();
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(9), keyUp(9)));
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyEventSourceTest, TheMeaninglessKeyIsSeenByTheTargetAndNotHeard) {
  X11LoneModifier loneModifier(poster->keyboard());
  TestWindow target;
  ASSERT_TRUE(EventLoop::runUntil([&] { return target.hasFocus(); }));
  user.press(XKB_KEY_Alt_L);
  loneModifier.accompany();
  poster->keyboard()->connection().synchronize();
  user.release(XKB_KEY_Alt_L);
  ASSERT_TRUE(EventLoop::runUntil([&] { return target.keyEvents().size() == 4; }));
  EXPECT_EQ(target.keyEvents()[1].symbol, XKB_KEY_NoSymbol);
  EXPECT_TRUE(target.keyEvents()[1].isPress);
  EXPECT_FALSE(target.keyEvents()[2].isPress);
  EXPECT_EQ(target.keyEvents()[3].code, leftAlt);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0)));
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

}  // namespace
}  // namespace vemo
