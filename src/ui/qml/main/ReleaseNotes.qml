// What is new in an update: headings, bullets and paragraphs, which can be selected and copied.
// Blocks have `kind` ("heading", "bullet" or "paragraph") and `markup`.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

ScrollView {
    id: notes

    required property var blocks

    implicitWidth: 340
    implicitHeight: Math.min(rows.implicitHeight + 32, 420)
    contentWidth: availableWidth
    contentHeight: rows.implicitHeight + 32
    focus: true
    activeFocusOnTab: true
    Accessible.role: Accessible.Document
    Accessible.name: qsTr("What's new")
    Keys.onDownPressed: ScrollBar.vertical.increase()
    Keys.onUpPressed: ScrollBar.vertical.decrease()
    ScrollBar.vertical.policy: ScrollBar.AsNeeded
    ScrollBar.horizontal.policy: ScrollBar.AlwaysOff
    Component.onCompleted: ScrollBar.vertical.Accessible.ignored = true

    Column {
        id: rows

        x: 16
        y: 16
        width: notes.availableWidth - 32
        spacing: 6
        LayoutMirroring.enabled: Theme.isRightToLeft
        LayoutMirroring.childrenInherit: true

        Repeater {
            model: notes.blocks

            Row {
                id: row

                required property var modelData
                readonly property bool isHeading: modelData.kind === "heading"

                width: rows.width
                spacing: Theme.spaceSmall

                Text {
                    id: bullet

                    visible: row.modelData.kind === "bullet"
                    text: "•"
                    color: Theme.secondaryText
                    font.pixelSize: Theme.fontBody
                    Accessible.ignored: true
                }
                TextEdit {
                    width: row.width - (bullet.visible ? bullet.width + row.spacing : 0)
                    text: row.modelData.markup
                    textFormat: TextEdit.RichText
                    readOnly: true
                    onLinkActivated: link => Qt.openUrlExternally(link)
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
                }
            }
        }
    }
}
