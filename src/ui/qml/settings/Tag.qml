// A small word beside a title, in a capsule.
import QtQuick
import "../common"

Rectangle {
    property alias text: word.text

    implicitWidth: word.implicitWidth + 2 * Theme.spaceSmall
    implicitHeight: word.implicitHeight + Theme.spaceTiny
    radius: height / 2
    color: Theme.selection
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Text {
        id: word

        anchors.centerIn: parent
        color: Theme.accentText
        font.pixelSize: Theme.fontSmall - 1
        font.weight: Font.DemiBold
    }
}
