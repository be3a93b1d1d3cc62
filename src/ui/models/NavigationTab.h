// The tabs of the main window, in the order of its sidebar. Any thread.
#pragma once

#include <QString>
#include <array>

namespace vemo {

enum class NavigationTab { Home, Stats, Dictionary, Shortcuts };

inline constexpr std::array navigationTabs{NavigationTab::Home, NavigationTab::Stats,
                                           NavigationTab::Dictionary, NavigationTab::Shortcuts};

/// As events name it.
QString name(NavigationTab tab);

/// As the user reads it.
QString label(NavigationTab tab);

QString symbol(NavigationTab tab);

}  // namespace vemo
