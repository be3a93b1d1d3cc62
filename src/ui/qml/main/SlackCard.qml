// The way to the sheet in which a Slack workspace is connected.
import QtQuick
import QtQuick.Layouts
import "../common"

Card {
    id: card

    required property var model

    RowLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        Feature {
            Layout.fillWidth: true
            symbol: card.model.isConnected ? "checkmark.circle.fill" : "number"
            title: qsTr("Connect Slack Workspace")
            text: card.model.workspace || qsTr("Syncs teammates and channels for instant voice @mentions.")
        }
        PillButton {
            text: card.model.isConnected ? qsTr("Sync Again…") : qsTr("Connect…")
            explanation: qsTr("Connect Slack Workspace")
            onClicked: card.model.open()
        }
    }
}
