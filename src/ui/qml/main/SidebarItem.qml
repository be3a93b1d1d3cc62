// One row of the sidebar.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

AbstractButton {
    id: item

    property string symbol
    property bool isSelected: false

    implicitHeight: 38
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()
    Accessible.selected: isSelected

    background: Rectangle {
        radius: Theme.radiusSmall
        color: item.isSelected ? Theme.selection : item.hovered || item.down ? Theme.hover : "transparent"

        FocusRing {
            target: item
        }
    }
    contentItem: RowLayout {
        spacing: Theme.spaceSmall

        Symbol {
            Layout.leftMargin: Theme.spaceSmall
            name: item.symbol
            size: 20
            color: item.isSelected ? Theme.accent : Theme.secondaryText
        }
        Text {
            Layout.fillWidth: true
            text: item.text
            horizontalAlignment: Text.AlignLeft
            color: Theme.text
            font.pixelSize: Theme.fontBody
            font.weight: item.isSelected ? Font.DemiBold : Font.Normal
            elide: Text.ElideRight
        }
    }
}
