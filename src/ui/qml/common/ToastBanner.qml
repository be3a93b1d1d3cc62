// A short message over a window, which comes with a spring and goes by itself.
import QtQuick

Rectangle {
    id: banner

    required property var model
    readonly property bool isShown: model.isShown

    anchors.horizontalCenter: parent.horizontalCenter
    y: isShown ? parent.height - height - Theme.spaceLarge : parent.height + Theme.spaceSmall
    width: Math.min(parent.width - 2 * Theme.spaceMedium, words.implicitWidth + 2 * Theme.spaceLarge)
    height: words.height + 2 * (Theme.spaceSmall + 2)
    radius: height / 2
    color: Theme.text
    opacity: isShown ? 1 : 0
    visible: opacity > 0
    z: 1
    Accessible.role: Accessible.AlertMessage
    // A name that comes with each message is read out each time.
    Accessible.name: isShown ? model.message : ""
    Accessible.ignored: !isShown

    Text {
        id: words

        anchors.centerIn: parent
        width: Math.min(implicitWidth, banner.parent.width - 2 * (Theme.spaceMedium + Theme.spaceLarge))
        text: banner.model.message
        color: Theme.window
        font.pixelSize: Theme.fontBody
        font.weight: Font.DemiBold
        elide: Text.ElideRight
        textFormat: Text.PlainText
    }
    // A response of 0.35 s with little damping left over.
    Behavior on y {
        enabled: !Theme.reducedMotion

        NumberAnimation {
            duration: 350
            easing.type: Easing.OutBack
            easing.overshoot: 0.8
        }
    }
    Behavior on opacity {
        enabled: !Theme.reducedMotion

        NumberAnimation {
            duration: 160
        }
    }
}
