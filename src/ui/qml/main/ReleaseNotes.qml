// What is new in an update: headings, bullets and paragraphs, which can be selected and copied.
// Blocks have `kind` ("heading", "bullet" or "paragraph"), `markup`, and its `links`.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

TabPage {
    id: notes

    required property var blocks

    implicitWidth: 340
    implicitHeight: Math.min(contentHeight, 420)
    focus: true
    activeFocusOnTab: true
    LayoutMirroring.enabled: Theme.isRightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Document
    Accessible.name: qsTr("What's new")
    Accessible.focusable: true
    Keys.onDownPressed: ScrollBar.vertical.increase()
    Keys.onUpPressed: ScrollBar.vertical.decrease()

    Column {
        id: rows

        Layout.fillWidth: true
        spacing: 6

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
                    id: block

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

                    Repeater {
                        model: row.modelData.links

                        LinkStop {
                            required property var modelData

                            words: modelData.words
                            address: modelData.address
                            within: block
                        }
                    }
                }
            }
        }
    }
}
