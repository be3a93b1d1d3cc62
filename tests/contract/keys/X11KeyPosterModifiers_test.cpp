// The keyboard before, during and after a paste, with a user who holds modifiers and lets them go.
#include "KeyPosterFixture.h"
#include "contract/x11/PrivateServer.h"

namespace vemo {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

class X11KeyPosterModifiersTest : public KeyPosterFixture {
 protected:
  X11KeyPosterModifiersTest() { openTarget(); }

  /// Whether the target saw the key go up right after it went down.
  bool cameUpAlone(xcb_keycode_t code) const {
    const auto& events = target->keyEvents();
    return std::ranges::adjacent_find(events, [code](const auto& event, const auto& next) {
             return event.code == code && event.isPress && next.code == code && !next.isPress;
           }) != events.end();
  }
  /// How many times the target saw the key go up.
  std::ptrdiff_t releases(xcb_keycode_t code) const {
    return std::ranges::count_if(target->keyEvents(), [code](const auto& event) {
      return event.code == code && !event.isPress;
    });
  }
};

TEST_F(X11KeyPosterModifiersTest, APasteIsControlVAndLeavesNoKeyDown) {
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask);
  EXPECT_THAT(user.keysDown(), IsEmpty());
  EXPECT_EQ(user.modifiersInForce(), 0U);
}

TEST_F(X11KeyPosterModifiersTest, TheTargetSeesTheKeyUpWithControlStillDown) {
  paste();
  ASSERT_TRUE(find(false));
  EXPECT_EQ(find(false)->modifiers, controlMask);
}

TEST_F(X11KeyPosterModifiersTest, TheKeyStaysDownForItsTime) {
  paste();
  ASSERT_TRUE(find(false));
  EXPECT_GE(milliseconds(find(false)->time - find(true)->time), pasteKeyGap);
}

TEST_F(X11KeyPosterModifiersTest, AProgramThatIsKeptFromReleasingHasPressedTheKeyOnce) {
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  // A key that stays down comes up here, too: it repeats.
  ASSERT_TRUE(EventLoop::runUntil([this] { return find(false) || pasteCount() > 1; }));
  EXPECT_EQ(pasteCount(), 1);
  EXPECT_TRUE(EventLoop::runUntil([this] { return user.keysDown().empty(); }));
  keystroke->release();
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyPosterModifiersTest, AHeldModifierHasCompanyEachTimeThatTheTargetSeesIt) {
  for (const xkb_keysym_t key : {XKB_KEY_Alt_L, XKB_KEY_Super_L, XKB_KEY_Shift_L}) {
    openTarget();
    user.press(key);
    paste();
    user.release(key);
    const xcb_keycode_t code = user.codeOf(key);
    ASSERT_TRUE(EventLoop::runUntil([&] { return releases(code) == 2; })) << key;
    EXPECT_FALSE(cameUpAlone(code)) << key;
    EXPECT_EQ(pasteModifiers(), controlMask) << key;
  }
}

TEST_F(X11KeyPosterModifiersTest, APasteWithNoModifierHeldHasNoCompany) {
  paste();
  ASSERT_TRUE(EventLoop::runUntil([this] { return target->keyEvents().size() >= 4; }));
  std::vector<xcb_keycode_t> codes;
  for (const auto& event : target->keyEvents()) codes.push_back(event.code);
  const xcb_keycode_t control = user.codeOf(XKB_KEY_Control_L);
  const xcb_keycode_t v = user.codeOf(XKB_KEY_v);
  EXPECT_THAT(codes, ElementsAre(control, v, v, control));
}

TEST_F(X11KeyPosterModifiersTest, HeldModifiersDoNotReachTheTargetAndAreHeldAfterwards) {
  for (const xkb_keysym_t key : {XKB_KEY_Shift_L, XKB_KEY_Shift_R, XKB_KEY_Alt_L, XKB_KEY_Super_L,
                                 XKB_KEY_Control_L, XKB_KEY_Control_R}) {
    openTarget();
    user.press(key);
    const auto keysBefore = user.keysDown();
    const auto modifiersBefore = user.modifiersInForce();
    paste();
    EXPECT_EQ(pasteModifiers(), controlMask) << key;
    EXPECT_EQ(user.keysDown(), keysBefore) << key;
    EXPECT_EQ(user.modifiersInForce(), modifiersBefore) << key;
    user.release(key);
    EXPECT_THAT(user.keysDown(), IsEmpty()) << key;
    EXPECT_EQ(user.modifiersInForce(), 0U) << key;
  }
}

TEST_F(X11KeyPosterModifiersTest, SeveralHeldModifiersAreHeldAfterwards) {
  user.press(XKB_KEY_Alt_L);
  user.press(XKB_KEY_Shift_L);
  user.press(XKB_KEY_Super_L);
  const auto keysBefore = user.keysDown();
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask);
  EXPECT_EQ(user.keysDown(), keysBefore);
}

TEST_F(X11KeyPosterModifiersTest, AModifierLetGoDuringTheChordIsNotPressedAgain) {
  user.press(XKB_KEY_Alt_L);
  user.press(XKB_KEY_Super_L);
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  ASSERT_TRUE(waitForKeyDown());
  user.release(XKB_KEY_Alt_L);
  keystroke->release();
  EXPECT_EQ(user.keysDown(), std::set{user.codeOf(XKB_KEY_Super_L)});
  user.release(XKB_KEY_Super_L);
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyPosterModifiersTest, AModifierLetGoAndPressedAgainDuringTheChordIsHeldAfterwards) {
  user.press(XKB_KEY_Alt_L);
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  user.release(XKB_KEY_Alt_L);
  user.press(XKB_KEY_Alt_L);
  keystroke->release();
  EXPECT_EQ(user.keysDown(), std::set{user.codeOf(XKB_KEY_Alt_L)});
}

TEST_F(X11KeyPosterModifiersTest, AModifierPressedDuringTheChordIsHeldAfterwards) {
  const auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  user.press(XKB_KEY_Control_R);
  keystroke->release();
  EXPECT_EQ(user.keysDown(), std::set{user.codeOf(XKB_KEY_Control_R)});
  user.release(XKB_KEY_Control_R);
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyPosterModifiersTest, AModifierLetGoLongAfterThePasteDoesNotStick) {
  user.press(XKB_KEY_Shift_L);
  paste();
  user.release(XKB_KEY_Shift_L);
  EXPECT_THAT(user.keysDown(), IsEmpty());
  target.reset();
  openTarget();
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask);
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyPosterModifiersTest, DestroyingAPasteMidwayReleasesEverything) {
  user.press(XKB_KEY_Alt_L);
  auto keystroke = poster->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  poster.reset();
  keystroke.reset();
  EXPECT_EQ(user.keysDown(), std::set{user.codeOf(XKB_KEY_Alt_L)});
}

TEST_F(X11KeyPosterModifiersTest, AHeldVStillPastes) {
  user.stopRepeats();
  user.press(XKB_KEY_v);
  target.reset();
  openTarget();
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask);
  user.release(XKB_KEY_v);
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyPosterModifiersTest, LocksCountAsNoModifiersAndStayAsTheyAre) {
  user.setLockedModifiers(lockMask | numLockMask, lockMask | numLockMask);
  EXPECT_EQ(poster->heldModifiers(), 0U);
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask | lockMask | numLockMask);
  EXPECT_EQ(user.lockedModifiers(), lockMask | numLockMask);
}

TEST_F(X11KeyPosterModifiersTest, AHeldCapsLockKeyIsNotStruckAgain) {
  user.press(XKB_KEY_Caps_Lock);
  const unsigned int lockedBefore = user.lockedModifiers();
  EXPECT_EQ(poster->heldModifiers(), 0U);
  paste();
  EXPECT_EQ(user.lockedModifiers(), lockedBefore);
  user.release(XKB_KEY_Caps_Lock);
  EXPECT_EQ(user.lockedModifiers(), lockedBefore);
}

TEST_F(X11KeyPosterModifiersTest, AnAltGrKeyIsNoOptionKeyAndDoesNotReachTheTarget) {
  user.chooseLayout(QStringLiteral("de"));
  user.press(XKB_KEY_ISO_Level3_Shift);
  EXPECT_EQ(poster->heldModifiers(), 0U);
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask);
  EXPECT_EQ(user.keysDown(), std::set{user.codeOf(XKB_KEY_ISO_Level3_Shift)});
  user.release(XKB_KEY_ISO_Level3_Shift);
  EXPECT_EQ(user.modifiersInForce(), 0U);
}

TEST_F(X11KeyPosterModifiersTest, InATerminalAPasteIsControlShiftV) {
  openTarget("XTerm");
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask | shiftMask);
  EXPECT_THAT(user.keysDown(), IsEmpty());
}

TEST_F(X11KeyPosterModifiersTest, InATerminalAHeldShiftIsHeldAfterwards) {
  openTarget("XTerm");
  user.press(XKB_KEY_Shift_L);
  user.press(XKB_KEY_Alt_L);
  const auto keysBefore = user.keysDown();
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask | shiftMask);
  EXPECT_EQ(user.keysDown(), keysBefore);
}

TEST_F(X11KeyPosterModifiersTest, WithoutAServerNoKeysCanBePosted) {
  EXPECT_EQ(X11KeyPoster::create(":9876"), nullptr);
  EXPECT_FALSE(canX11HearAndPostKeys(":9876"));
  EXPECT_TRUE(canX11HearAndPostKeys());
}

TEST_F(X11KeyPosterModifiersTest, AServerThatDiesTakesNoPasteAndEndsNothing) {
  PrivateServer server;
  const auto doomed = X11KeyPoster::create(server.display());
  ASSERT_TRUE(doomed);
  const auto keystroke = doomed->makePaste();
  ASSERT_TRUE(keystroke);
  keystroke->press();
  server.kill();
  keystroke->release();
  EXPECT_EQ(doomed->heldModifiers(), 0U);
  EXPECT_EQ(doomed->makePaste(), nullptr);
  EXPECT_FALSE(doomed->canPost());
}

}  // namespace
}  // namespace vemo
