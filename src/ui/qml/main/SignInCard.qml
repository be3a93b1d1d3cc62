// What somebody sees who isn't signed in.
import QtQuick
import QtQuick.Layouts
import "../common"

Item {
    id: card

    required property var model

    Card {
        anchors.centerIn: parent
        width: Math.min(parent.width - 2 * Theme.spaceLarge, 680)
        padding: Theme.spaceLarge

        RowLayout {
            width: parent.width
            spacing: Theme.spaceLarge

            ColumnLayout {
                Layout.fillWidth: true
                spacing: Theme.spaceLarge

                Mark {
                    Layout.preferredWidth: 64
                    Layout.preferredHeight: 64
                }
                Column {
                    Layout.fillWidth: true

                    Repeater {
                        model: [qsTr("Type Less,"), qsTr("Speak more")]

                        Text {
                            required property string modelData

                            width: parent.width
                            text: modelData
                            horizontalAlignment: Text.AlignLeft
                            color: Theme.text
                            font.pixelSize: Theme.fontHero
                            font.weight: Font.Bold
                            elide: Text.ElideRight
                            Accessible.role: Accessible.Heading
                            Accessible.name: text
                        }
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: Theme.spaceSmall

                    PillButton {
                        id: signInButton

                        Layout.fillWidth: true
                        Layout.maximumWidth: 280
                        Layout.preferredHeight: 44
                        text: card.model.signInLabel
                        isProminent: true
                        isBusy: card.model.isSigningIn
                        enabled: !card.model.isSigningIn
                        focus: true
                        onClicked: card.model.signIn()
                    }
                    PillButton {
                        Layout.preferredHeight: 44
                        visible: card.model.isSigningIn
                        text: qsTr("Cancel")
                        onClicked: card.model.cancelSignIn()
                    }
                }
                Text {
                    Layout.fillWidth: true
                    visible: text.length > 0
                    text: card.model.errorText
                    color: Theme.danger
                    font.pixelSize: Theme.fontBody
                    horizontalAlignment: Text.AlignLeft
                    wrapMode: Text.Wrap
                    textFormat: Text.PlainText
                    Accessible.role: Accessible.AlertMessage
                    Accessible.name: text
                }
                LinkedText {
                    Layout.fillWidth: true
                    words: card.model.agreement
                }
            }
            SpeakingWaveform {
                Layout.preferredHeight: fullHeight
                Layout.alignment: Qt.AlignVCenter
                visible: card.width >= 560
            }
        }
    }
    ProgramMenu {
        anchors {
            top: parent.top
            right: parent.right
            margins: Theme.spaceSmall
        }
        model: card.model
    }
}
