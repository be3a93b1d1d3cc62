// The product's mark: a voice between two lips of a rounded square, whatever the desktop's accent is.
import QtQuick

Rectangle {
    id: mark

    implicitWidth: 32
    implicitHeight: 32
    radius: width * 0.28
    color: Theme.mark
    Accessible.ignored: true

    Row {
        anchors.centerIn: parent
        spacing: mark.width * 0.085

        Repeater {
            model: [0.28, 0.52, 0.34, 0.18]

            Rectangle {
                required property real modelData

                anchors.verticalCenter: parent.verticalCenter
                width: mark.width * 0.085
                height: mark.height * modelData
                radius: width / 2
                color: Theme.markInk
            }
        }
    }
}
