// Nobody is signed in: the way in, and what became of the last attempt.
import QtQuick
import QtQuick.Layouts
import "../common"

ColumnLayout {
    id: card

    required property var model

    spacing: Theme.spaceSmall

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.spaceSmall

        Text {
            Layout.fillWidth: true
            text: qsTr("Not signed in")
            color: Theme.text
            font.pixelSize: Theme.fontBody
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignLeft
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        PillButton {
            visible: card.model.isSigningIn
            text: qsTr("Cancel")
            onClicked: card.model.cancelSignIn()
        }
        PillButton {
            text: card.model.isSigningIn ? qsTr("Signing in…") : qsTr("Sign In with Google")
            isProminent: true
            isBusy: card.model.isSigningIn
            enabled: !card.model.isSigningIn
            onClicked: card.model.signIn()
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
}
