// How people say a file name. EXT stands for the spoken forms of SpokenExtensions.h, joined by "|".
#pragma once

#include <QStringView>

namespace vemo {

/// Group 1 is the lead, which stays; group 2 the name, group 3 the extension.
inline constexpr QStringView fileAfterNounPattern =
    u"(?i)\\b(the\\s+file|file)\\s+([a-zA-Z0-9_\\-\\s]+?)\\s*(?:dot|\\.)\\s*(EXT)\\b";

/// Groups as above.
inline constexpr QStringView fileAfterVerbPattern =
    u"(?i)\\b(open|edit|modify|check|inspect|read|view|look\\s+at|scan|in|at|see|update|fix|"
    u"refactor|test|analyze)\\s+([a-zA-Z0-9_\\-\\s]+?)\\s*(?:dot|\\.)\\s*(EXT)\\b";

/// Group 1 is the name, group 2 the extension.
inline constexpr QStringView bareFilePattern = u"(?i)\\b([a-zA-Z0-9_\\-]+)\\s+dot\\s+(EXT)\\b";

/// What all three end with: a text without it names no file.
inline constexpr QStringView fileEndingPattern = u"(?i)(?:dot|\\.)\\s*(EXT)\\b";

}  // namespace vemo
