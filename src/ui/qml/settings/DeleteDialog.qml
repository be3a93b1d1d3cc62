// Asks before the account is deleted.
import QtQuick
import QtQuick.Layouts
import "../common"

Sheet {
    id: sheet

    required property var model

    isShown: model.isDeleteDialogOpen
    title: qsTr("Delete your Vemo account?")
    onDismissed: model.cancelDelete()

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        Text {
            Layout.fillWidth: true
            text: qsTr("Your account, dictation history, dictionary and usage data are deleted permanently. This can't be undone.")
            color: Theme.secondaryText
            font.pixelSize: Theme.fontBody
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
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
                onClicked: sheet.model.cancelDelete()
            }
            PillButton {
                text: qsTr("Delete Account")
                isDestructive: true
                onClicked: sheet.model.confirmDelete()
            }
        }
    }
}
