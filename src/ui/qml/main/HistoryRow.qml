// One recent transcription: its text, its age, and a button that copies it.
import QtQuick
import QtQuick.Layouts
import "../common"

Item {
    id: row

    required property int index
    required property string text
    required property string age
    required property string copySymbol
    required property string copyLabel
    signal copying

    implicitHeight: content.implicitHeight + 2 * Theme.spaceMedium
    Accessible.role: Accessible.ListItem
    Accessible.name: text + ", " + age

    Rectangle {
        width: parent.width
        height: 1
        visible: row.index > 0
        color: Theme.line
    }
    RowLayout {
        id: content

        anchors {
            left: parent.left
            right: parent.right
            verticalCenter: parent.verticalCenter
            margins: Theme.spaceMedium
        }
        spacing: Theme.spaceMedium

        Column {
            Layout.fillWidth: true
            spacing: Theme.spaceTiny

            Text {
                width: parent.width
                text: row.text
                color: Theme.text
                font.pixelSize: Theme.fontBody
                lineHeight: 1.25
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
                maximumLineCount: 4
                elide: Text.ElideRight
                textFormat: Text.PlainText
            }
            Text {
                width: parent.width
                text: row.age
                horizontalAlignment: Text.AlignLeft
                color: Theme.secondaryText
                font.pixelSize: Theme.fontSmall
            }
        }
        PillButton {
            symbol: row.copySymbol
            text: row.copyLabel
            explanation: row.text
            onClicked: row.copying()
        }
    }
}
