// A symbol with one or two lines beside it.
import QtQuick
import QtQuick.Layouts
import "../common"

RowLayout {
    id: feature

    required property string symbol
    required property string title
    property string text

    spacing: Theme.spaceSmall
    Accessible.role: Accessible.StaticText
    Accessible.name: text ? title + ". " + text : title

    Rectangle {
        Layout.preferredWidth: 36
        Layout.preferredHeight: 36
        radius: Theme.radiusSmall
        color: Theme.selection

        Symbol {
            anchors.centerIn: parent
            name: feature.symbol
            size: 20
            color: Theme.accent
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignVCenter
        spacing: 0

        Text {
            Layout.fillWidth: true
            text: feature.title
            horizontalAlignment: Text.AlignLeft
            color: Theme.text
            font.pixelSize: Theme.fontBody
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
        }
        Text {
            Layout.fillWidth: true
            visible: text.length > 0
            text: feature.text
            horizontalAlignment: Text.AlignLeft
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            wrapMode: Text.Wrap
        }
    }
}
