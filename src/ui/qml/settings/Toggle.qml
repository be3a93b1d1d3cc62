// A switch; what it switches is told by the row that it stands in.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

AbstractButton {
    id: toggle

    required property string name
    property bool isOn: false
    signal switched(bool isOn)

    implicitWidth: 44
    implicitHeight: 26
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.5
    checkable: true
    checked: isOn
    Accessible.name: name
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onToggleAction: if (enabled) clicked()
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onClicked: {
        switched(!isOn)
        // Whatever the click made of it, it shows what is in force.
        checked = Qt.binding(() => isOn)
    }

    background: Rectangle {
        radius: height / 2
        color: toggle.isOn ? Theme.accent : toggle.hovered ? Theme.line : Theme.field
        border.width: toggle.isOn ? 0 : 1
        border.color: Theme.secondaryText

        FocusRing {
            target: toggle
            radius: height / 2
        }
    }
    contentItem: Item {
        Rectangle {
            readonly property bool isAtEnd: toggle.isOn !== toggle.mirrored

            x: isAtEnd ? parent.width - width - 3 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: 20
            height: 20
            radius: 10
            color: toggle.isOn ? Theme.textOnAccent : Theme.secondaryText

            Behavior on x {
                enabled: !Theme.reducedMotion

                NumberAnimation {
                    duration: 120
                }
            }
        }
    }
}
