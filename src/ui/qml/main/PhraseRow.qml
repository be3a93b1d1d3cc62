// One row of the dictionary or of the shortcuts.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

ItemDelegate {
    id: row

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
    padding: 0
    hoverEnabled: true
    focusPolicy: isTabStop || activeFocus ? Qt.StrongFocus : Qt.NoFocus
    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, written as %2").arg(spoken).arg(written)
    Keys.onReturnPressed: editing()
    Keys.onEnterPressed: editing()
    Keys.onDeletePressed: deleting()
    Keys.onDownPressed: walking(index + 1)
    Keys.onUpPressed: walking(index - 1)
    onClicked: editing()

    background: RowBackground {
        isFirst: row.isFirst
        isLast: row.isLast
        isLit: row.hovered || row.activeFocus
        hasRing: row.visualFocus
    }
    contentItem: RowLayout {
        spacing: Theme.spaceSmall

        Text {
            Layout.preferredWidth: row.width * 0.34
            Layout.leftMargin: Theme.spaceMedium
            text: row.spoken
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
            text: row.written.replace(/\s+/g, " ")
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
            text: qsTr("Edit %1").arg(row.spoken)
            focusPolicy: row.isTabStop || activeFocus ? Qt.StrongFocus : Qt.NoFocus
            onClicked: row.editing()
        }
        SymbolButton {
            Layout.rightMargin: Theme.spaceSmall
            symbol: "trash"
            text: qsTr("Delete %1").arg(row.spoken)
            focusPolicy: row.isTabStop || activeFocus ? Qt.StrongFocus : Qt.NoFocus
            onClicked: row.deleting()
        }
    }
}
