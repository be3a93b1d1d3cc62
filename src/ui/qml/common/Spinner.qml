// Something is under way. Stands still, and is still there, where motion is reduced.
import QtQuick

Item {
    id: spinner

    property bool running: true
    property int size: 16
    property color color: Theme.accent

    implicitWidth: size
    implicitHeight: size
    visible: running
    Accessible.role: Accessible.Animation
    Accessible.name: qsTr("In progress")

    Repeater {
        model: 8

        Rectangle {
            required property int index

            x: spinner.size / 2 - width / 2
            width: spinner.size / 8
            height: spinner.size / 3.4
            radius: width / 2
            color: spinner.color
            opacity: 0.25 + 0.75 * index / 7
            transform: Rotation {
                origin.x: spinner.size / 16
                origin.y: spinner.size / 2
                angle: 45 * index
            }
        }
    }
    RotationAnimator on rotation {
        running: spinner.running && spinner.visible && !Theme.reducedMotion
        loops: Animation.Infinite
        from: 0
        to: 360
        duration: 900
    }
}
