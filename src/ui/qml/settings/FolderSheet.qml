// Asks for a folder by its path, where the desktop has no dialog of its own.
import QtQuick
import QtQuick.Layouts
import "../common"

Sheet {
    id: sheet

    required property var model

    isShown: model.isOpen
    title: qsTr("Choose Folder…")
    onDismissed: model.reject()

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        LabelledField {
            id: path

            Layout.fillWidth: true
            label: sheet.model.message
            hint: "/home/me/project"
            focus: true
            onAccepted: sheet.model.acceptPath(text)
        }
        Text {
            Layout.fillWidth: true
            visible: text.length > 0
            text: sheet.model.problem
            color: Theme.danger
            font.pixelSize: Theme.fontSmall
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
                onClicked: sheet.model.reject()
            }
            PillButton {
                text: sheet.model.prompt
                isProminent: true
                enabled: path.text.length > 0
                onClicked: sheet.model.acceptPath(path.text)
            }
        }
    }
}
