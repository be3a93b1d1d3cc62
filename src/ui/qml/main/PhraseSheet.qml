// The sheet in which one row of the dictionary or of the shortcuts is written or changed.
import QtQuick
import QtQuick.Layouts
import "../common"

Sheet {
    id: sheet

    required property var model
    required property string addTitle
    required property string editTitle
    required property string explanation
    required property string spokenLabel
    required property string spokenHint
    required property string writtenLabel
    property string writtenHint
    required property string addLabel
    property bool isMultiLine: false

    isShown: model.isOpen
    title: model.isEditing ? editTitle : addTitle
    onDismissed: model.dismiss()

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        Text {
            Layout.fillWidth: true
            text: sheet.explanation
            color: Theme.secondaryText
            font.pixelSize: Theme.fontBody
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        LabelledField {
            Layout.fillWidth: true
            label: sheet.spokenLabel
            hint: sheet.spokenHint
            text: sheet.model.spoken
            focus: true
            onEdited: text => sheet.model.spoken = text
            onAccepted: sheet.model.save()
        }
        LabelledField {
            Layout.fillWidth: true
            visible: !sheet.isMultiLine
            label: sheet.writtenLabel
            hint: sheet.writtenHint
            text: sheet.model.written
            onEdited: text => sheet.model.written = text
            onAccepted: sheet.model.save()
        }
        LabelledArea {
            Layout.fillWidth: true
            visible: sheet.isMultiLine
            label: sheet.writtenLabel
            text: sheet.model.written
            onEdited: text => sheet.model.written = text
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
                text: sheet.model.isEditing ? qsTr("Save Changes") : sheet.addLabel
                isProminent: true
                enabled: sheet.model.canSave
                onClicked: sheet.model.save()
            }
        }
    }
}
