// What stands where nothing is yet, and says how to begin.
import QtQuick
import "../common"

Card {
    id: place

    required property string symbol
    required property string title
    required property string text

    Column {
        width: parent.width
        topPadding: Theme.spaceMedium
        bottomPadding: Theme.spaceMedium
        spacing: Theme.spaceSmall

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            name: place.symbol
            size: 32
            color: Theme.secondaryText
        }
        Text {
            width: parent.width
            text: place.title
            color: Theme.text
            font.pixelSize: Theme.fontBody
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(parent.width, 440)
            text: place.text
            color: Theme.secondaryText
            font.pixelSize: Theme.fontBody
            lineHeight: 1.3
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
