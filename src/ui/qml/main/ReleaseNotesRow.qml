// A heading, bullet or paragraph of release notes, which can be selected and copied, with its links as stops of
// the Tab key.
import QtQuick
import "../common"

Row {
    id: row

    /// "heading", "bullet" or "paragraph".
    required property string kind
    required property string markup
    /// With `words` and `address`.
    required property var links
    readonly property bool isHeading: kind === "heading"

    /// One of its links has the keyboard.
    signal linkReached()

    spacing: Theme.spaceSmall

    Text {
        id: bullet

        visible: row.kind === "bullet"
        text: "•"
        color: Theme.secondaryText
        font.pixelSize: Theme.fontBody
        Accessible.ignored: true
    }
    TextEdit {
        id: block

        width: row.width - (bullet.visible ? bullet.width + row.spacing : 0)
        text: row.markup
        textFormat: TextEdit.RichText
        readOnly: true
        onLinkActivated: link => Qt.openUrlExternally(link.trim())
        selectByMouse: true
        color: Theme.text
        selectionColor: Theme.accent
        selectedTextColor: Theme.textOnAccent
        font.pixelSize: row.isHeading ? Theme.fontTitle : Theme.fontBody
        font.weight: row.isHeading ? Font.DemiBold : Font.Normal
        horizontalAlignment: TextEdit.AlignLeft
        wrapMode: TextEdit.Wrap
        Accessible.role: row.isHeading ? Accessible.Heading : Accessible.StaticText
        Accessible.name: getText(0, length)

        LinkStops {
            links: row.links
            within: block
            onReached: row.linkReached()
        }
    }
}
