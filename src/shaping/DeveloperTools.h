// Which applications count as developer tools, where spoken code is written as code.
#pragma once

#include <QString>
#include <QStringView>

namespace vemo {

/// Tested on the application's identifier.
inline constexpr QStringView developerToolIdentifierWords[] = {
    u"code",      u"cursor", u"antigravity", u"windsurf", u"xcode",
    u"jetbrains", u"zed",    u"terminal",    u"warp",     u"iterm"};

/// Tested on its name. "zed" and "jetbrains" would be found in too many names of other programs.
inline constexpr QStringView developerToolNameWords[] = {
    u"code", u"cursor", u"antigravity", u"windsurf", u"xcode", u"terminal", u"warp", u"iterm"};

/// Whether one of the words occurs, whatever its case in the user's language.
bool isDeveloperTool(const QString& identifier, const QString& name);

}  // namespace vemo
