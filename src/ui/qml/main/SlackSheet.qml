// The sheet in which a Slack workspace is connected; the settings window shows it, too.
import QtQuick
import QtQuick.Layouts
import "../common"

Sheet {
    id: sheet

    required property var model

    isShown: model.isOpen
    title: qsTr("Connect Slack Workspace")
    onDismissed: model.dismiss()

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        Text {
            Layout.fillWidth: true
            text: qsTr("Syncs teammates and channels for instant voice @mentions.")
            color: Theme.secondaryText
            font.pixelSize: Theme.fontBody
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        LabelledField {
            Layout.fillWidth: true
            label: qsTr("Slack User or Bot Token (xoxp-... or xoxb-...)")
            hint: qsTr("Paste your Slack token here")
            isSecure: true
            text: sheet.model.token
            enabled: !sheet.model.isConnecting
            focus: true
            onEdited: text => sheet.model.token = text
            onAccepted: sheet.model.connectAndSync()
        }
        LinkedText {
            Layout.fillWidth: true
            words: qsTr("Create an app at [api.slack.com/apps](https://api.slack.com/apps), give it the scopes `users:read` and `channels:read` under “OAuth & Permissions”, install it to your workspace and copy its token.")
        }
        Text {
            Layout.fillWidth: true
            visible: text.length > 0
            text: sheet.model.failure
            color: Theme.danger
            font.pixelSize: Theme.fontBody
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spaceSmall

            Item {
                Layout.fillWidth: true
            }
            PillButton {
                text: qsTr("Cancel")
                onClicked: sheet.model.dismiss()
            }
            PillButton {
                text: sheet.model.connectLabel
                isProminent: true
                isBusy: sheet.model.isConnecting
                enabled: sheet.model.canConnect
                onClicked: sheet.model.connectAndSync()
            }
        }
    }
}
