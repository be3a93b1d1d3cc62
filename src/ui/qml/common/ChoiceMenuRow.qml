// One choice of a menu.
//
// What a list unmakes has no place in accessibility itself, as with the rows of the dictionary.
import QtQuick
import QtQuick.Controls.Basic

FocusScope {
    id: cell

    required property int index
    required property var modelData
    signal pointed
    signal chosen

    implicitHeight: 34

    MenuItem {
        id: row

        anchors.fill: parent
        padding: 0
        indicator: null
        arrow: null
        focus: true
        hoverEnabled: true
        focusPolicy: Qt.NoFocus
        text: cell.modelData.text
        Accessible.name: text
        Accessible.onPressAction: clicked()
        onHoveredChanged: if (hovered) cell.pointed()
        onClicked: cell.chosen()

        background: Rectangle {
            radius: Theme.radiusSmall
            color: cell.ListView.isCurrentItem ? Theme.selection : "transparent"
        }
        contentItem: Text {
            leftPadding: Theme.spaceTiny
            rightPadding: Theme.spaceTiny
            text: row.text
            color: Theme.text
            font.pixelSize: Theme.fontBody
            horizontalAlignment: Text.AlignLeft
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            textFormat: Text.PlainText
        }
    }
}
