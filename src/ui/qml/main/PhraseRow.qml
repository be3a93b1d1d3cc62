// One row of the dictionary or of the shortcuts.
//
// What a list unmakes has no place in accessibility itself: Qt tells of an item that goes while the item is
// half unmade, and an assistive tool that is listening then ends the program.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

FocusScope {
    id: cell

    required property int index
    required property string entryId
    required property string spoken
    required property string written
    property bool isFirst: false
    property bool isLast: false
    property bool isTabStop: false
    signal editing
    signal deleting
    signal walking(int to)

    height: 52
    // A list keeps the rows that have gone for those that come; nobody is to find them meanwhile.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    ItemDelegate {
        id: row

        anchors.fill: parent
        focus: true
        padding: 0
        hoverEnabled: true
        focusPolicy: cell.isTabStop || activeFocus ? Qt.StrongFocus : Qt.NoFocus
        Accessible.role: Accessible.ListItem
        Accessible.name: qsTr("%1, written as %2").arg(cell.spoken).arg(cell.written)
        Keys.onReturnPressed: cell.editing()
        Keys.onEnterPressed: cell.editing()
        Keys.onDeletePressed: cell.deleting()
        Keys.onDownPressed: cell.walking(cell.index + 1)
        Keys.onUpPressed: cell.walking(cell.index - 1)
        Accessible.onPressAction: cell.editing()
        onClicked: cell.editing()

        background: RowBackground {
            isFirst: cell.isFirst
            isLast: cell.isLast
            isLit: row.hovered || row.activeFocus
            hasRing: row.visualFocus
        }
        contentItem: RowLayout {
            spacing: Theme.spaceSmall

            Text {
                Layout.preferredWidth: row.width * 0.34
                Layout.leftMargin: Theme.spaceMedium
                text: cell.spoken
                color: Theme.text
                font.pixelSize: Theme.fontBody
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
            }
            Symbol {
                name: "arrow.right"
                size: 16
                color: Theme.secondaryText
                isMirrored: row.mirrored
            }
            Text {
                Layout.fillWidth: true
                text: cell.written.replace(/\s+/g, " ")
                color: Theme.secondaryText
                font.pixelSize: Theme.fontBody
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideRight
                maximumLineCount: 1
                textFormat: Text.PlainText
            }
            SymbolButton {
                Layout.rightMargin: -Theme.spaceTiny
                symbol: "pencil"
                text: qsTr("Edit %1").arg(cell.spoken)
                focusPolicy: cell.isTabStop || activeFocus ? Qt.StrongFocus : Qt.NoFocus
                onClicked: cell.editing()
            }
            SymbolButton {
                Layout.rightMargin: Theme.spaceSmall
                symbol: "trash"
                text: qsTr("Delete %1").arg(cell.spoken)
                focusPolicy: cell.isTabStop || activeFocus ? Qt.StrongFocus : Qt.NoFocus
                onClicked: cell.deleting()
            }
        }
    }
}
