// A section of the settings: its title, and a card of rows with lines between them.
import QtQuick
import QtQuick.Layouts
import "../common"

ColumnLayout {
    id: section

    property string title
    default property alias rows: column.data

    Layout.fillWidth: true
    spacing: Theme.spaceSmall

    Text {
        Layout.fillWidth: true
        Layout.leftMargin: Theme.spaceTiny
        text: section.title
        color: Theme.secondaryText
        font.pixelSize: Theme.fontSmall
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignLeft
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Card {
        Layout.fillWidth: true
        topPadding: Theme.spaceTiny
        bottomPadding: Theme.spaceTiny

        ColumnLayout {
            id: column

            width: parent.width
            spacing: 0
        }
    }
}
