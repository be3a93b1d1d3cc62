// The paste shortcut under keyboard layouts that have V elsewhere, or not at all.
#include "KeyPosterFixture.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::IsEmpty;

struct Layout {
  const char16_t* layout;
  const char16_t* variant = u"";
};

class X11KeyPosterLayoutsTest : public KeyPosterFixture {
 protected:
  /// The code of the key that the target saw.
  xcb_keycode_t struckCode() const {
    const auto event = find(true);
    return event ? event->code : 0;
  }
};

TEST_F(X11KeyPosterLayoutsTest, EveryLayoutGivesControlV) {
  for (const Layout& layout : {Layout{u"us"}, Layout{u"de"}, Layout{u"fr"},
                               Layout{u"us", u"dvorak"}, Layout{u"de", u"neo"}, Layout{u"ru"},
                               Layout{u"gr"}, Layout{u"il"}, Layout{u"ru", u"phonetic"}}) {
    const QString name = QString::fromUtf16(layout.layout);
    user.chooseLayout(name, QString::fromUtf16(layout.variant));
    openTarget();
    paste();
    EXPECT_EQ(pasteModifiers(), controlMask) << name.toStdString();
    EXPECT_THAT(user.keysDown(), IsEmpty()) << name.toStdString();
  }
}

TEST_F(X11KeyPosterLayoutsTest, DvorakHasItsVOnAnotherKey) {
  openTarget();
  paste();
  const xcb_keycode_t usual = struckCode();
  user.chooseLayout(u"us"_s, u"dvorak"_s);
  openTarget();
  paste();
  EXPECT_NE(struckCode(), usual);
}

TEST_F(X11KeyPosterLayoutsTest, WithASecondLayoutTheGroupInForceDecidesAndStaysInForce) {
  user.chooseLayout(u"us,us"_s, u",dvorak"_s);
  openTarget();
  paste();
  const xcb_keycode_t usual = struckCode();
  user.chooseGroup(1);
  openTarget();
  paste();
  EXPECT_NE(struckCode(), usual);
  EXPECT_EQ(user.group(), 1U);
}

TEST_F(X11KeyPosterLayoutsTest, ARussianGroupBorrowsTheVOfTheLatinOneAndStaysInForce) {
  user.chooseLayout(u"us,ru"_s);
  openTarget();
  paste();
  const xcb_keycode_t usual = struckCode();
  user.chooseGroup(1);
  openTarget();
  paste();
  EXPECT_EQ(struckCode(), usual);
  EXPECT_EQ(pasteModifiers(), controlMask);
  EXPECT_EQ(user.group(), 1U);
}

TEST_F(X11KeyPosterLayoutsTest, TheLatinGroupMayComeSecond) {
  user.chooseLayout(u"gr,us"_s);
  openTarget();
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask);
  EXPECT_EQ(user.group(), 0U);
}

TEST_F(X11KeyPosterLayoutsTest, ControlAndShiftAsTheLayoutSwitchDoNotSwitch) {
  user.chooseLayout(u"us,ru"_s, {}, u"grp:ctrl_shift_toggle"_s);
  openTarget("XTerm");
  paste();
  EXPECT_EQ(pasteModifiers(), controlMask | shiftMask);
  EXPECT_EQ(user.group(), 0U);
}

TEST_F(X11KeyPosterLayoutsTest, ALentKeyIsUsedAgainAndGivenBack) {
  user.chooseLayout(u"ru"_s);
  EXPECT_EQ(user.codeOf(XKB_KEY_v), 0);
  openTarget();
  paste();
  const xcb_keycode_t lent = struckCode();
  EXPECT_EQ(user.codeOf(XKB_KEY_v), lent);
  openTarget();
  paste();
  EXPECT_EQ(struckCode(), lent);
  poster.reset();
  EXPECT_EQ(user.codeOf(XKB_KEY_v), 0);
}

TEST_F(X11KeyPosterLayoutsTest, ALayoutChosenLaterIsNoticed) {
  openTarget();
  paste();
  for (const QString& layout : {u"ru"_s, u"us"_s, u"gr"_s}) {
    user.chooseLayout(layout);
    openTarget();
    paste();
    EXPECT_EQ(pasteModifiers(), controlMask) << layout.toStdString();
  }
}

}  // namespace
}  // namespace vemo
