// The sheet that records a shortcut. Every key goes to the recording while that has the keyboard; Tab leads on
// to the buttons as well, and any key that isn't for buttons leads back.
import QtQuick
import QtQuick.Layouts
import "../common"

Sheet {
    id: sheet

    required property var model
    readonly property int fadeDuration: Theme.reducedMotion ? 0 : 200
    readonly property bool isAtButtons: model.isAtButtons

    width: Math.min(500, parent ? parent.width - Theme.spaceLarge : 500)
    isShown: model.isOpen
    title: model.title
    onDismissed: model.cancel()
    onIsAtButtonsChanged: {
        if (isAtButtons)
            presets.itemAt(0).forceActiveFocus(Qt.TabFocusReason)
        else if (model.isOpen)
            capture.forceActiveFocus(Qt.TabFocusReason)
    }

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: sheet.fadeDuration
            easing.type: Easing.InOutQuad
        }
    }
    exit: Transition {
        NumberAnimation {
            property: "opacity"
            to: 0
            duration: sheet.fadeDuration
            easing.type: Easing.InOutQuad
        }
    }

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spaceSmall

            Symbol {
                name: "command.circle.fill"
                size: 24
                color: Theme.accent
            }
            Text {
                Layout.fillWidth: true
                text: sheet.model.instruction
                color: Theme.secondaryText
                font.pixelSize: Theme.fontBody
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        Rectangle {
            id: capture

            Layout.fillWidth: true
            implicitHeight: 92
            radius: Theme.radius
            color: Theme.field
            border.width: 2
            border.color: sheet.model.hasRecorded ? Theme.accent : Theme.line
            clip: true
            activeFocusOnTab: true
            focus: true
            Accessible.role: Accessible.StaticText
            Accessible.name: sheet.model.hasRecorded ? sheet.model.recordedName : prompt.text
            Accessible.focusable: true
            onActiveFocusChanged: if (activeFocus) sheet.model.leaveButtons()

            Text {
                id: prompt

                anchors.centerIn: parent
                width: parent.width - 2 * Theme.spaceMedium
                visible: !sheet.model.hasRecorded
                text: qsTr("Press any key or combination on your keyboard…")
                color: Theme.secondaryText
                font.pixelSize: Theme.fontBody
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
            Column {
                anchors.centerIn: parent
                visible: sheet.model.hasRecorded
                spacing: Theme.spaceTiny

                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    text: sheet.model.recordedShortName
                    color: Theme.text
                    font.pixelSize: Theme.fontHeading
                    font.weight: Font.DemiBold
                    Accessible.ignored: true
                }
                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    text: sheet.model.recordedName
                    color: Theme.secondaryText
                    font.pixelSize: Theme.fontSmall
                    Accessible.ignored: true
                }
            }
            Rectangle {
                anchors.bottom: parent.bottom
                width: sheet.model.isHeld ? parent.width : 0
                height: 3
                color: Theme.accent

                Behavior on width {
                    enabled: sheet.model.isHeld && !Theme.reducedMotion

                    NumberAnimation {
                        duration: sheet.model.holdDuration
                    }
                }
            }
        }
        Text {
            Layout.fillWidth: true
            text: qsTr("Supports single keys (F1-F12, Esc, Fn, Right Option, etc.) or chords (e.g. ⌘⇧Space, ⌥Space).")
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            Layout.fillWidth: true
            text: qsTr("To save without the mouse, hold the shortcut for two seconds. Tab leads to the buttons.")
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            Layout.fillWidth: true
            text: qsTr("Quick Presets")
            color: Theme.text
            font.pixelSize: Theme.fontSmall
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignLeft
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        Flow {
            Layout.fillWidth: true
            spacing: Theme.spaceSmall

            Repeater {
                id: presets

                model: sheet.model.quickPresets

                PillButton {
                    required property var modelData

                    text: modelData.label
                    onClicked: sheet.model.applyPreset(modelData.choice)
                }
            }
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spaceSmall

            PillButton {
                text: qsTr("Reset to Default")
                onClicked: sheet.model.resetToDefault()
            }
            Item {
                Layout.fillWidth: true
            }
            PillButton {
                text: qsTr("Cancel")
                onClicked: sheet.model.cancel()
            }
            PillButton {
                text: qsTr("Save")
                isProminent: true
                enabled: sheet.model.hasRecorded
                onClicked: sheet.model.confirm()
            }
        }
    }
}
