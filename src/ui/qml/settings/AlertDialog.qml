// Tells what became of the account's deletion.
import QtQuick
import QtQuick.Layouts
import "../common"

Sheet {
    id: sheet

    required property var model

    isShown: model.isAlertOpen
    title: model.alertTitle
    onDismissed: model.dismissAlert()

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        Text {
            Layout.fillWidth: true
            text: sheet.model.alertText
            color: Theme.secondaryText
            font.pixelSize: Theme.fontBody
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            textFormat: Text.PlainText
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        RowLayout {
            Layout.fillWidth: true

            Item {
                Layout.fillWidth: true
            }
            PillButton {
                text: qsTr("OK")
                isProminent: true
                onClicked: sheet.model.dismissAlert()
            }
        }
    }
}
