// A row's part of a card that is made of rows: round at the two ends, a line between.
import QtQuick
import "../common"

Item {
    id: background

    property bool isFirst: false
    property bool isLast: false
    property bool isLit: false
    property bool hasRing: false

    clip: true

    Rectangle {
        width: parent.width
        y: background.isFirst ? 0 : -radius
        height: parent.height + (background.isFirst ? 0 : radius) + (background.isLast ? 0 : radius)
        radius: Theme.radius
        color: background.isLit ? Theme.hoveredCard : Theme.card
        border.color: Theme.line
        border.width: 1
    }
    Rectangle {
        x: 1
        width: parent.width - 2
        height: 1
        visible: !background.isFirst
        color: Theme.line
    }
    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        visible: background.hasRing
        radius: Theme.radius - 2
        color: "transparent"
        border.color: Theme.accent
        border.width: 2
    }
}
