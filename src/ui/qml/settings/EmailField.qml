// The account's address, which a click copies.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

ColumnLayout {
    id: field

    required property string email
    signal copying

    spacing: 6

    Text {
        Layout.fillWidth: true
        text: qsTr("Owner Email")
        color: Theme.text
        font.pixelSize: Theme.fontSmall
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignLeft
        Accessible.ignored: true
    }
    AbstractButton {
        id: button

        Layout.fillWidth: true
        implicitHeight: 38
        leftPadding: 12
        rightPadding: 12
        hoverEnabled: true
        focusPolicy: Qt.StrongFocus
        Accessible.role: Accessible.Button
        Accessible.name: qsTr("Owner Email") + ": " + field.email
        Accessible.description: qsTr("Copies the address")
        Accessible.onPressAction: if (enabled) clicked()
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
        onClicked: field.copying()

        background: Rectangle {
            radius: Theme.radiusSmall
            color: button.hovered ? Theme.hover : Theme.field
            border.width: 1
            border.color: Theme.line

            FocusRing {
                target: button
            }
        }
        contentItem: RowLayout {
            Text {
                Layout.fillWidth: true
                text: field.email
                color: Theme.secondaryText
                font.pixelSize: Theme.fontBody
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideMiddle
                textFormat: Text.PlainText
                Accessible.ignored: true
            }
            Symbol {
                name: "doc.on.doc"
                size: 16
                color: Theme.secondaryText
            }
        }
    }
}
