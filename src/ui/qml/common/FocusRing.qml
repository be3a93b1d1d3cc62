// Shows where the keyboard is.
import QtQuick

Rectangle {
    required property Item target

    anchors.fill: parent
    anchors.margins: -2
    radius: Theme.radiusSmall + 2
    visible: target.visualFocus
    color: "transparent"
    border.width: 2
    border.color: Theme.accent
}
