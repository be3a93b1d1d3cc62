// A short text in plain words, with links written as [words](address) and code between backticks.
import QtQuick

Text {
    id: linked

    /// The text with its links and code.
    property string words

    function styled(words) {
        return words.replace(/&/g, "&amp;").replace(/</g, "&lt;")
            .replace(/\[([^\]]*)\]\(([^)]*)\)/g, '<a href="$2">$1</a>')
            .replace(/`([^`]*)`/g, "<b>$1</b>")
    }

    function spoken(words) {
        return words.replace(/\]\([^)]*\)/g, "").replace(/[\[`]/g, "")
    }

    text: styled(words)
    textFormat: Text.StyledText
    color: Theme.secondaryText
    linkColor: Theme.accentText
    font.pixelSize: Theme.fontSmall
    lineHeight: 1.25
    horizontalAlignment: Text.AlignLeft
    wrapMode: Text.Wrap
    Accessible.role: Accessible.StaticText
    Accessible.name: spoken(words)
    onLinkActivated: link => Qt.openUrlExternally(link)

    HoverHandler {
        cursorShape: linked.hoveredLink ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
}
