#include "platform/x11/TerminalEmulators.h"

#include <gmock/gmock.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(TerminalEmulatorsTest, TerminalsAreKnownByTheirClassInAnyCase) {
  for (const auto& name :
       {u"XTerm"_s,      u"Gnome-terminal"_s, u"konsole"_s,   u"Xfce4-terminal"_s,
        u"kitty"_s,      u"Alacritty"_s,      u"foot"_s,      u"org.wezfurlong.wezterm"_s,
        u"Terminator"_s, u"Tilix"_s,          u"URxvt"_s,     u"st-256color"_s,
        u"Lxterminal"_s, u"Mate-terminal"_s,  u"qterminal"_s, u"terminology"_s,
        u"Guake"_s,      u"yakuake"_s,        u"Tilda"_s,     u"cool-retro-term"_s,
        u"Hyper"_s,      u"dev.warp.Warp"_s}) {
    EXPECT_TRUE(isTerminalEmulator({u"unusual"_s, name})) << name.toStdString();
  }
}

TEST(TerminalEmulatorsTest, ATerminalThatWasGivenAnotherClassIsKnownByItsInstance) {
  EXPECT_TRUE(isTerminalEmulator({u"xterm"_s, u"Scratchpad"_s}));
}

TEST(TerminalEmulatorsTest, NamesThatMerelyHoldATerminalsNameAreNoTerminals) {
  for (const auto& name : {u"Firefox"_s, u"stellarium"_s, u"footage"_s, u"Mousepad"_s, u""_s})
    EXPECT_FALSE(isTerminalEmulator({name, name})) << name.toStdString();
}

}  // namespace
}  // namespace vemo
