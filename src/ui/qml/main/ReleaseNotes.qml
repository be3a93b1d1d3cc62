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

    Column {
        id: rows

        x: 16
        y: 16
        width: notes.availableWidth - 32
        spacing: 6

        Repeater {
            model: notes.blocks

            Row {
                id: row

                required property var modelData

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
                    font.pixelSize: row.modelData.kind === "heading" ? Theme.fontTitle : Theme.fontBody
                    font.weight: row.modelData.kind === "heading" ? Font.DemiBold : Font.Normal
                    wrapMode: TextEdit.Wrap
                    Accessible.role: row.modelData.kind === "heading" ? Accessible.Heading : Accessible.StaticText
                    Accessible.name: getText(0, length)
                }
            }
        }
    }
}
