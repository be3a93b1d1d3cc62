// What Vemo does for its user, with the button that starts and stops a dictation.
import QtQuick
import QtQuick.Layouts
import "../common"

Card {
    id: card

    required property var model

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        ColumnLayout {
            Layout.fillWidth: true
            spacing: Theme.spaceTiny

            Text {
                Layout.fillWidth: true
                text: qsTr("Talk, don't type")
                horizontalAlignment: Text.AlignLeft
                color: Theme.text
                font.pixelSize: Theme.fontHeading
                font.weight: Font.Bold
                wrapMode: Text.Wrap
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                Layout.fillWidth: true
                text: qsTr("Use your voice in any app, instantly")
                horizontalAlignment: Text.AlignLeft
                color: Theme.secondaryText
                font.pixelSize: Theme.fontBody
                wrapMode: Text.Wrap
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        GridLayout {
            Layout.fillWidth: true
            columns: card.width < 520 ? 1 : 2
            columnSpacing: Theme.spaceLarge
            rowSpacing: Theme.spaceMedium

            Feature {
                Layout.fillWidth: true
                symbol: "text.badge.checkmark"
                title: qsTr("Smart formatting")
                text: qsTr("Punctuation and structure by AI")
            }
            Feature {
                Layout.fillWidth: true
                symbol: "lock.fill"
                title: qsTr("Your data, completely secure")
            }
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spaceMedium

            PillButton {
                Layout.preferredHeight: 40
                text: card.model.dictationLabel
                symbol: card.model.dictationSymbol
                isProminent: true
                enabled: card.model.canToggleDictation
                onClicked: card.model.toggleDictation()
            }
            Row {
                Layout.fillWidth: true
                visible: card.model.isRecording
                spacing: Theme.spaceSmall

                Rectangle {
                    anchors.verticalCenter: parent.verticalCenter
                    width: 8
                    height: 8
                    radius: 4
                    color: Theme.danger
                }
                Text {
                    text: card.model.stateLabel
                    color: Theme.danger
                    font.pixelSize: Theme.fontBody
                    font.weight: Font.DemiBold
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
        }
    }
}
