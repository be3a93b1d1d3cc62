// The symbol and the words of a row of the sidebar.
import QtQuick
import QtQuick.Layouts
import "../common"

RowLayout {
    id: content

    property string symbol
    property string text
    property bool isSelected: false

    spacing: Theme.spaceSmall

    Symbol {
        Layout.leftMargin: Theme.spaceSmall
        name: content.symbol
        size: 20
        color: content.isSelected ? Theme.accent : Theme.secondaryText
    }
    Text {
        Layout.fillWidth: true
        text: content.text
        horizontalAlignment: Text.AlignLeft
        color: Theme.text
        font.pixelSize: Theme.fontBody
        font.weight: content.isSelected ? Font.DemiBold : Font.Normal
        elide: Text.ElideRight
    }
}
