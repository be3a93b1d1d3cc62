// Every colour, distance and size of the windows. Texts have a contrast of at least 4.5 to 1 on
// whatever they can stand on.
//
// What the desktop prefers is set by the program that shows the windows.
pragma Singleton
import QtQuick

QtObject {
    property bool isDark: false
    property bool reducedMotion: false
    /// `accent`, `accentText`, `textOnAccent` and `selection` of the desktop's accent colour; without
    /// one they are Vemo's own.
    property var desktopAccent: ({})

    /// Popups stand beside the window's items and have to be told.
    readonly property bool isRightToLeft: Qt.application.layoutDirection === Qt.RightToLeft

    readonly property color window: isDark ? "#1b1d22" : "#f6f6f4"
    readonly property color sidebar: isDark ? "#16181c" : "#ecedea"
    readonly property color card: isDark ? "#24272d" : "#ffffff"
    readonly property color hoveredCard: isDark ? "#2c3037" : "#f3f5f4"
    readonly property color field: isDark ? "#1b1d22" : "#f8f9f8"
    readonly property color line: isDark ? "#383d46" : "#dfe1de"
    readonly property color hover: isDark ? "#2d3138" : "#e2e4e0"
    readonly property color selection: desktopAccent.selection ?? (isDark ? "#1f3b38" : "#d9ede9")
    readonly property color scrim: isDark ? "#a0000000" : "#66101418"

    readonly property color text: isDark ? "#f1f2f4" : "#1c1f23"
    readonly property color secondaryText: isDark ? "#aeb4bd" : "#575e67"
    readonly property color accent: desktopAccent.accent ?? (isDark ? "#46bfae" : "#0b7a6c")
    readonly property color accentText: desktopAccent.accentText ?? (isDark ? "#5fd0c0" : "#0a6e61")
    readonly property color textOnAccent: desktopAccent.textOnAccent ?? (isDark ? "#07201c" : "#ffffff")
    readonly property color mark: isDark ? "#46bfae" : "#0b7a6c"
    readonly property color markInk: isDark ? "#07201c" : "#ffffff"
    readonly property color danger: isDark ? "#ff938a" : "#b93226"

    readonly property int spaceTiny: 4
    readonly property int spaceSmall: 8
    readonly property int spaceMedium: 16
    readonly property int spaceLarge: 32

    readonly property int radius: 12
    readonly property int radiusSmall: 8

    readonly property int fontSmall: 12
    readonly property int fontBody: 14
    readonly property int fontTitle: 17
    readonly property int fontHeading: 24
    readonly property int fontFigure: 28
    readonly property int fontHero: 40
}
