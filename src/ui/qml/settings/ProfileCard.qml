// The name and the address of whoever is signed in.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

ColumnLayout {
    id: card

    required property var model

    spacing: Theme.spaceMedium

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.spaceMedium

        Rectangle {
            implicitWidth: 48
            implicitHeight: 48
            radius: 24
            color: Theme.selection
            Accessible.ignored: true

            Text {
                anchors.centerIn: parent
                text: card.model.initials
                color: Theme.accentText
                font.pixelSize: Theme.fontTitle
                font.weight: Font.DemiBold
                Accessible.ignored: true
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            Text {
                Layout.fillWidth: true
                text: qsTr("Logged in")
                color: Theme.text
                font.pixelSize: Theme.fontBody
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignLeft
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Text {
                Layout.fillWidth: true
                text: card.model.email
                color: Theme.secondaryText
                font.pixelSize: Theme.fontSmall
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideMiddle
                textFormat: Text.PlainText
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        SymbolButton {
            text: qsTr("Refresh the profile")
            symbol: "arrow.clockwise"
            enabled: !card.model.isRefreshing
            visible: !card.model.isRefreshing
            onClicked: card.model.refreshProfile()
        }
        Spinner {
            running: card.model.isRefreshing
        }
        PillButton {
            text: qsTr("Sign out")
            onClicked: card.model.signOut()
        }
    }
    GridLayout {
        Layout.fillWidth: true
        columns: card.width < 480 ? 1 : 2
        columnSpacing: Theme.spaceMedium
        rowSpacing: Theme.spaceMedium

        LabelledField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            label: qsTr("First Name")
            text: card.model.firstName
            onEdited: text => card.model.firstName = text
            onAccepted: card.model.save()
        }
        LabelledField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            label: qsTr("Last Name")
            text: card.model.lastName
            onEdited: text => card.model.lastName = text
            onAccepted: card.model.save()
        }
    }
    EmailField {
        Layout.fillWidth: true
        email: card.model.email
        onCopying: card.model.copyEmail()
    }
    RowLayout {
        Layout.fillWidth: true

        Text {
            Layout.fillWidth: true
            text: card.model.canSave ? qsTr("Not saved yet") : ""
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            horizontalAlignment: Text.AlignLeft
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            Accessible.ignored: text.length === 0
        }
        PillButton {
            text: card.model.isSaving ? qsTr("Saving…") : qsTr("Save")
            isProminent: true
            isBusy: card.model.isSaving
            enabled: card.model.canSave
            onClicked: card.model.save()
        }
    }
}
