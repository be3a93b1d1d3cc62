// Which key is which: by its place, but for the modifiers, which go by the layout in force.
#include <xkbcommon/xkbcommon-keysyms.h>

#include "KeyListener.h"
#include "contract/x11/TestKeyboard.h"
#include "contract/x11/VirtualUser.h"
#include "platform/x11/X11KeyEventSource.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

constexpr xcb_keycode_t rightAltPlace = 108;
constexpr xcb_keycode_t capsLockPlace = 66;
constexpr std::int64_t altGr = 256 + 100;

class X11KeyEventSourceLayoutsTest : public testing::Test {
 protected:
  X11KeyEventSourceLayoutsTest() { EXPECT_TRUE(source.start()); }

  std::vector<KeyEvent> tap(xcb_keycode_t code) {
    user.pressPlace(code);
    user.releasePlace(code);
    return listener.takeEvents();
  }
  std::vector<KeyEvent> tapSymbol(xkb_keysym_t symbol) { return tap(user.codeOf(symbol)); }

  EventLoop loop;
  VirtualUser user;
  X11KeyEventSource source;
  KeyListener listener{source};
};

TEST_F(X11KeyEventSourceLayoutsTest, EveryNamedKeyHasItsCode) {
  const std::pair<xkb_keysym_t, std::int64_t> keys[] = {
      {XKB_KEY_a, 0},       {XKB_KEY_s, 1},          {XKB_KEY_d, 2},
      {XKB_KEY_f, 3},       {XKB_KEY_h, 4},          {XKB_KEY_g, 5},
      {XKB_KEY_z, 6},       {XKB_KEY_x, 7},          {XKB_KEY_c, 8},
      {XKB_KEY_v, 9},       {XKB_KEY_b, 11},         {XKB_KEY_q, 12},
      {XKB_KEY_w, 13},      {XKB_KEY_e, 14},         {XKB_KEY_r, 15},
      {XKB_KEY_y, 16},      {XKB_KEY_t, 17},         {XKB_KEY_1, 18},
      {XKB_KEY_2, 19},      {XKB_KEY_3, 20},         {XKB_KEY_4, 21},
      {XKB_KEY_6, 22},      {XKB_KEY_5, 23},         {XKB_KEY_equal, 24},
      {XKB_KEY_9, 25},      {XKB_KEY_7, 26},         {XKB_KEY_minus, 27},
      {XKB_KEY_8, 28},      {XKB_KEY_0, 29},         {XKB_KEY_bracketright, 30},
      {XKB_KEY_o, 31},      {XKB_KEY_u, 32},         {XKB_KEY_bracketleft, 33},
      {XKB_KEY_i, 34},      {XKB_KEY_p, 35},         {XKB_KEY_Return, 36},
      {XKB_KEY_l, 37},      {XKB_KEY_j, 38},         {XKB_KEY_apostrophe, 39},
      {XKB_KEY_k, 40},      {XKB_KEY_semicolon, 41}, {XKB_KEY_backslash, 42},
      {XKB_KEY_comma, 43},  {XKB_KEY_slash, 44},     {XKB_KEY_n, 45},
      {XKB_KEY_m, 46},      {XKB_KEY_period, 47},    {XKB_KEY_Tab, 48},
      {XKB_KEY_space, 49},  {XKB_KEY_grave, 50},     {XKB_KEY_BackSpace, 51},
      {XKB_KEY_Escape, 53}, {XKB_KEY_F5, 96},        {XKB_KEY_F6, 97},
      {XKB_KEY_F7, 98},     {XKB_KEY_F3, 99},        {XKB_KEY_F8, 100},
      {XKB_KEY_F9, 101},    {XKB_KEY_F11, 103},      {XKB_KEY_F10, 109},
      {XKB_KEY_F12, 111},   {XKB_KEY_Home, 115},     {XKB_KEY_Prior, 116},
      {XKB_KEY_F4, 118},    {XKB_KEY_End, 119},      {XKB_KEY_F2, 120},
      {XKB_KEY_Next, 121},  {XKB_KEY_F1, 122},       {XKB_KEY_Left, 123},
      {XKB_KEY_Right, 124}, {XKB_KEY_Down, 125},     {XKB_KEY_Up, 126},
      {XKB_KEY_Menu, 110},  {XKB_KEY_Delete, 117},   {XKB_KEY_KP_Enter, 76},
  };
  for (const auto& [symbol, code] : keys)
    EXPECT_THAT(tapSymbol(symbol), ElementsAre(keyDown(code), keyUp(code))) << code;
}

TEST_F(X11KeyEventSourceLayoutsTest, EveryModifierHasItsCodeAndFlag) {
  const std::tuple<xkb_keysym_t, std::int64_t, ModifierFlags> keys[] = {
      {XKB_KEY_Super_R, 54, CommandFlag},   {XKB_KEY_Super_L, 55, CommandFlag},
      {XKB_KEY_Shift_L, 56, ShiftFlag},     {XKB_KEY_Alt_L, 58, OptionFlag},
      {XKB_KEY_Control_L, 59, ControlFlag}, {XKB_KEY_Shift_R, 60, ShiftFlag},
      {XKB_KEY_Alt_R, 61, OptionFlag},      {XKB_KEY_Control_R, 62, ControlFlag},
      {XKB_KEY_Scroll_Lock, 63, FnFlag},    {XKB_KEY_Pause, 63, FnFlag},
  };
  for (const auto& [symbol, code, flag] : keys) {
    EXPECT_THAT(tapSymbol(symbol), ElementsAre(flagsChanged(code, flag), flagsChanged(code, 0)))
        << code;
  }
}

TEST_F(X11KeyEventSourceLayoutsTest, CapsLockIsAModifierWithoutAFlag) {
  for (int lockAndUnlock = 0; lockAndUnlock < 2; ++lockAndUnlock)
    EXPECT_THAT(tap(capsLockPlace), ElementsAre(flagsChanged(57, 0), flagsChanged(57, 0)));
}

TEST_F(X11KeyEventSourceLayoutsTest, LettersKeepTheirPlacesUnderEveryLayout) {
  const xcb_keycode_t placeOfA = user.codeOf(XKB_KEY_a);
  for (const auto& [layout, variant] :
       {std::pair(u"us"_s, u"dvorak"_s), std::pair(u"de"_s, u""_s), std::pair(u"de"_s, u"neo"_s),
        std::pair(u"fr"_s, u""_s), std::pair(u"ru"_s, u""_s), std::pair(u"gr"_s, u""_s)}) {
    user.chooseLayout(layout, variant);
    EXPECT_THAT(tap(placeOfA), ElementsAre(keyDown(0), keyUp(0))) << layout.toStdString();
  }
}

TEST_F(X11KeyEventSourceLayoutsTest, TheRightAltIsRightOptionWhereTheLayoutGivesItAlt) {
  for (const QString& layout : {u"us"_s, u"ru"_s}) {
    user.chooseLayout(layout);
    EXPECT_THAT(tap(rightAltPlace), ElementsAre(flagsChanged(61, OptionFlag), flagsChanged(61, 0)))
        << layout.toStdString();
  }
}

TEST_F(X11KeyEventSourceLayoutsTest, TheRightAltIsATypingKeyWhereItShiftsToTheThirdLevel) {
  for (const auto& [layout, variant] :
       {std::pair(u"de"_s, u""_s), std::pair(u"de"_s, u"neo"_s), std::pair(u"gr"_s, u""_s),
        std::pair(u"us"_s, u"altgr-intl"_s)}) {
    user.chooseLayout(layout, variant);
    EXPECT_THAT(tap(rightAltPlace), ElementsAre(keyDown(altGr), keyUp(altGr)))
        << layout.toStdString();
  }
}

TEST_F(X11KeyEventSourceLayoutsTest, ACharacterTypedWithAltGrCarriesNoOptionFlag) {
  user.chooseLayout(u"de"_s);
  user.pressPlace(rightAltPlace);
  user.press(XKB_KEY_q);
  EXPECT_EQ(source.modifierFlags(), 0U);
  user.release(XKB_KEY_q);
  user.releasePlace(rightAltPlace);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(keyDown(altGr), keyDown(12), keyUp(12), keyUp(altGr)));
}

TEST_F(X11KeyEventSourceLayoutsTest, NeosCapsLockPlaceIsATypingKey) {
  user.chooseLayout(u"de"_s, u"neo"_s);
  EXPECT_THAT(tap(capsLockPlace), ElementsAre(keyDown(256 + 58), keyUp(256 + 58)));
}

TEST_F(X11KeyEventSourceLayoutsTest, CapsLockThatActsAsControlIsControl) {
  user.chooseLayout(u"us"_s, {}, u"ctrl:nocaps"_s);
  EXPECT_THAT(tap(capsLockPlace), ElementsAre(flagsChanged(59, ControlFlag), flagsChanged(59, 0)));
}

TEST_F(X11KeyEventSourceLayoutsTest, AnAltThatComposesIsATypingKey) {
  user.chooseLayout(u"us"_s, {}, u"compose:ralt"_s);
  EXPECT_THAT(tap(rightAltPlace), ElementsAre(keyDown(altGr), keyUp(altGr)));
}

TEST_F(X11KeyEventSourceLayoutsTest, TheGroupInForceDecidesWhatTheRightAltIs) {
  user.chooseLayout(u"us,de"_s);
  EXPECT_THAT(tap(rightAltPlace), ElementsAre(flagsChanged(61, OptionFlag), flagsChanged(61, 0)));
  user.chooseGroup(1);
  EXPECT_THAT(tap(rightAltPlace), ElementsAre(keyDown(altGr), keyUp(altGr)));
  user.chooseGroup(0);
  EXPECT_THAT(tap(rightAltPlace), ElementsAre(flagsChanged(61, OptionFlag), flagsChanged(61, 0)));
}

TEST_F(X11KeyEventSourceLayoutsTest, TheGroupAtTheStartCounts) {
  user.chooseLayout(u"us,de"_s);
  user.chooseGroup(1);
  X11KeyEventSource late;
  KeyListener ear(late);
  ASSERT_TRUE(late.start());
  user.pressPlace(rightAltPlace);
  EXPECT_THAT(ear.takeEvents(), ElementsAre(keyDown(altGr)));
  user.releasePlace(rightAltPlace);
}

TEST_F(X11KeyEventSourceLayoutsTest, AKeyGoesUpAsWhatItWentDownThoughTheLayoutHaveChanged) {
  user.chooseLayout(u"us,de"_s);
  user.pressPlace(rightAltPlace);
  user.chooseGroup(1);
  user.releasePlace(rightAltPlace);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(61, OptionFlag), flagsChanged(61, 0)));
  user.pressPlace(rightAltPlace);
  user.chooseLayout(u"us"_s);
  user.releasePlace(rightAltPlace);
  EXPECT_THAT(listener.takeEvents(), ElementsAre(keyDown(altGr), keyUp(altGr)));
}

TEST_F(X11KeyEventSourceLayoutsTest, ALayoutSwitchWithAltAndShiftLeavesNothingHeld) {
  user.chooseLayout(u"us,ru"_s, {}, u"grp:alt_shift_toggle"_s);
  user.press(XKB_KEY_Alt_L);
  user.press(XKB_KEY_Shift_L);
  EXPECT_EQ(user.group(), 1U);
  EXPECT_EQ(source.modifierFlags(), OptionFlag | ShiftFlag);
  user.release(XKB_KEY_Shift_L);
  user.release(XKB_KEY_Alt_L);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(56, OptionFlag | ShiftFlag),
                          flagsChanged(56, OptionFlag), flagsChanged(58, 0)));
}

TEST_F(X11KeyEventSourceLayoutsTest, WhereAKeyIsMadeFnScrollLockIsItselfAgain) {
  const xcb_keycode_t scrollLock = user.codeOf(XKB_KEY_Scroll_Lock);
  user.giveSymbol(capsLockPlace, XKB_KEY_XF86Fn);
  EXPECT_THAT(tap(capsLockPlace), ElementsAre(flagsChanged(63, FnFlag), flagsChanged(63, 0)));
  EXPECT_THAT(tap(scrollLock), ElementsAre(keyDown(256 + 70), keyUp(256 + 70)));
}

TEST_F(X11KeyEventSourceLayoutsTest, KeyboardsMayHaveLayoutsOfTheirOwn) {
  const auto second = TestKeyboard::plugIn();
  ASSERT_TRUE(second);
  user.chooseLayout(u"de"_s);
  second->press(rightAltPlace);
  second->release(rightAltPlace);
  EXPECT_THAT(listener.takeEvents(),
              ElementsAre(flagsChanged(61, OptionFlag), flagsChanged(61, 0)));
  EXPECT_THAT(tap(rightAltPlace), ElementsAre(keyDown(altGr), keyUp(altGr)));
}

}  // namespace
}  // namespace vemo
