#include "platform/x11/TerminalEmulators.h"

#include <algorithm>
#include <array>

namespace vemo {

namespace {

/// Class or instance names of windows, in lower case.
constexpr std::array<QStringView, 62> terminalNames{
    u"alacritty",
    u"blackbox",
    u"com.github.amezin.ddterm",
    u"com.gexperts.tilix",
    u"com.mitchellh.ghostty",
    u"com.raggesilver.blackbox",
    u"cool-retro-term",
    u"contour",
    u"deepin-terminal",
    u"dev.warp.warp",
    u"eterm",
    u"extraterm",
    u"foot",
    u"footclient",
    u"ghostty",
    u"gnome-terminal",
    u"gnome-terminal-server",
    u"guake",
    u"guake-main",
    u"hyper",
    u"io.elementary.terminal",
    u"kgx",
    u"kitty",
    u"konsole",
    u"koi8rxterm",
    u"lilyterm",
    u"lxterminal",
    u"mate-terminal",
    u"mlterm",
    u"org.codeberg.dnkl.foot",
    u"org.gnome.console",
    u"org.gnome.ptyxis",
    u"org.gnome.terminal",
    u"org.kde.konsole",
    u"org.kde.yakuake",
    u"org.wezfurlong.wezterm",
    u"pantheon-terminal",
    u"ptyxis",
    u"qterminal",
    u"rio",
    u"roxterm",
    u"rxvt",
    u"sakura",
    u"st",
    u"st-256color",
    u"stterm",
    u"tabby",
    u"terminator",
    u"terminology",
    u"termite",
    u"tilda",
    u"tilix",
    u"urxvt",
    u"uxterm",
    u"warp",
    u"warp-terminal",
    u"wezterm",
    u"wezterm-gui",
    u"xfce4-terminal",
    u"xterm",
    u"yakuake",
    u"zutty",
};

bool isListed(const QString& name) {
  return std::ranges::find(terminalNames, name.toLower()) != terminalNames.end();
}

}  // namespace

bool isTerminalEmulator(const X11WindowClass& windowClass) {
  return isListed(windowClass.className) || isListed(windowClass.instanceName);
}

}  // namespace vemo
