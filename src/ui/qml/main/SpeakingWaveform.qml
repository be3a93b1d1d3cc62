// A voice, drawn as bars that rise and fall. Says nothing, so assistive tools pass over it; stands
// still where motion is reduced.
import QtQuick
import "../common"

Row {
    id: waveform

    property int barCount: 9
    readonly property real fullHeight: 72
    readonly property var restingHeights: [0.25, 0.45, 0.7, 0.5, 1, 0.6, 0.8, 0.4, 0.25]

    spacing: 6
    height: fullHeight
    Accessible.ignored: true

    Repeater {
        model: waveform.barCount

        Rectangle {
            id: bar

            required property int index
            readonly property real restingHeight: waveform.restingHeights[index % waveform.restingHeights.length]
            /// From the height at rest, at 0, to its opposite, at 1.
            property real swing: 0
            readonly property real level: restingHeight + swing * (Math.max(0.15, 1 - restingHeight) - restingHeight)

            anchors.verticalCenter: parent ? parent.verticalCenter : undefined
            width: 6
            height: Math.max(width, waveform.fullHeight * level)
            radius: width / 2
            color: Theme.accent
            opacity: 0.55 + 0.45 * restingHeight

            SequentialAnimation on swing {
                running: !Theme.reducedMotion && waveform.visible
                loops: Animation.Infinite

                NumberAnimation {
                    to: 1
                    duration: 520 + 70 * (bar.index % 4)
                    easing.type: Easing.InOutSine
                }
                NumberAnimation {
                    to: 0
                    duration: 520 + 70 * ((bar.index + 2) % 4)
                    easing.type: Easing.InOutSine
                }
            }
        }
    }
}
