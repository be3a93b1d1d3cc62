// One setting: what it is, what it does, and the control that changes it at the end of the row.
import QtQuick
import QtQuick.Layouts
import "../common"

Item {
    id: row

    property string title
    property string explanation
    property string symbol
    property string tag
    property bool isFirst: false
    default property alias control: place.data

    Layout.fillWidth: true
    implicitHeight: Math.max(52, layout.implicitHeight + 2 * (Theme.spaceSmall + 2))

    Rectangle {
        width: parent.width
        height: 1
        visible: !row.isFirst
        color: Theme.line
    }
    RowLayout {
        id: layout

        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        spacing: Theme.spaceMedium

        Symbol {
            visible: row.symbol.length > 0
            name: row.symbol
            size: 20
            color: Theme.accent
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            RowLayout {
                Layout.fillWidth: true
                visible: row.title.length > 0
                spacing: Theme.spaceSmall

                Text {
                    Layout.fillWidth: row.tag.length === 0
                    Layout.maximumWidth: layout.width * 0.7
                    text: row.title
                    color: Theme.text
                    font.pixelSize: Theme.fontBody
                    font.weight: Font.DemiBold
                    horizontalAlignment: Text.AlignLeft
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
                Tag {
                    visible: row.tag.length > 0
                    text: row.tag
                }
                Item {
                    Layout.fillWidth: true
                    visible: row.tag.length > 0
                }
            }
            Text {
                Layout.fillWidth: true
                visible: text.length > 0
                text: row.explanation
                color: Theme.secondaryText
                font.pixelSize: Theme.fontSmall
                lineHeight: 1.15
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
                textFormat: Text.PlainText
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        RowLayout {
            id: place

            Layout.alignment: Qt.AlignVCenter | Qt.AlignRight
            spacing: Theme.spaceSmall
        }
    }
}
