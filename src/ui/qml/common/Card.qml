// A surface that holds what belongs together.
import QtQuick
import QtQuick.Controls.Basic

Control {
    default property alias content: inner.data

    padding: Theme.spaceMedium

    background: Rectangle {
        radius: Theme.radius
        color: Theme.card
        border.width: 1
        border.color: Theme.line
    }
    contentItem: Item {
        id: inner

        implicitHeight: childrenRect.height
    }
}
