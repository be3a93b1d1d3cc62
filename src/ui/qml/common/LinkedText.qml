// A short text in plain words, with links written as [words](address) and code between backticks. Each link is
// a stop of the Tab key, and Enter opens it.
import QtQuick

Item {
    id: linked

    /// The text with its links and code.
    property string words

    function linksOf(words) {
        const links = []
        words.replace(/\[([^\]]*)\]\(([^)]*)\)/g, (all, shown, address) => links.push({ words: shown, address }))
        return links
    }

    function styled(words) {
        return words.replace(/&/g, "&amp;").replace(/</g, "&lt;")
            .replace(/\[([^\]]*)\]\(([^)]*)\)/g, '<a href="$2">$1</a>')
            .replace(/`([^`]*)`/g, "<b>$1</b>")
    }

    function spoken(words) {
        return words.replace(/\]\([^)]*\)/g, "").replace(/[\[`]/g, "")
    }

    implicitWidth: drawn.implicitWidth
    implicitHeight: drawn.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: spoken(words)

    Text {
        id: drawn

        width: parent.width
        text: linked.styled(linked.words)
        textFormat: Text.StyledText
        color: Theme.secondaryText
        linkColor: Theme.accentText
        font.pixelSize: Theme.fontSmall
        lineHeight: 1.25
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        // Its links can't be pressed by assistive tools; those below can.
        Accessible.ignored: true
        onLinkActivated: link => Qt.openUrlExternally(link)

        HoverHandler {
            cursorShape: drawn.hoveredLink ? Qt.PointingHandCursor : Qt.ArrowCursor
        }
    }
    LinkStops {
        links: linked.linksOf(linked.words)
        within: drawn
    }
}
