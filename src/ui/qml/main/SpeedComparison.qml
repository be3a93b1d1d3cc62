// Why it is worth speaking: how fast a voice is beside a keyboard.
import QtQuick
import QtQuick.Layouts
import "../common"

Card {
    id: card

    readonly property var rows: [
        { label: qsTr("Voice"), speed: qsTr("150 WPM"), share: 1, symbol: "mic.fill" },
        { label: qsTr("Keyboard"), speed: qsTr("40 WPM"), share: 40 / 150, symbol: "keyboard" },
    ]

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        SectionTitle {
            Layout.fillWidth: true
            text: qsTr("Why Dictate?")
        }
        Repeater {
            model: card.rows

            ColumnLayout {
                id: row

                required property var modelData

                Layout.fillWidth: true
                spacing: Theme.spaceTiny
                Accessible.role: Accessible.StaticText
                Accessible.name: modelData.label + ", " + modelData.speed

                RowLayout {
                    Layout.fillWidth: true
                    spacing: Theme.spaceSmall

                    Symbol {
                        name: row.modelData.symbol
                        size: 16
                        color: Theme.secondaryText
                    }
                    Text {
                        Layout.fillWidth: true
                        text: row.modelData.label
                        horizontalAlignment: Text.AlignLeft
                        color: Theme.text
                        font.pixelSize: Theme.fontBody
                    }
                    Text {
                        text: row.modelData.speed
                        color: Theme.text
                        font.pixelSize: Theme.fontBody
                        font.weight: Font.DemiBold
                    }
                }
                Rectangle {
                    Layout.fillWidth: true
                    Layout.preferredHeight: 8
                    radius: 4
                    color: Theme.hover

                    Rectangle {
                        anchors.left: parent.left
                        width: parent.width * row.modelData.share
                        height: parent.height
                        radius: 4
                        color: row.modelData.share === 1 ? Theme.accent : Theme.secondaryText
                    }
                }
            }
        }
        Text {
            Layout.fillWidth: true
            text: qsTr("Speaking is 3x to 4x faster than keyboard typing. Vemo formats punctuation, spelling, and structure automatically so you can capture thoughts at the speed of speech.")
            horizontalAlignment: Text.AlignLeft
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            lineHeight: 1.3
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
