// The colours that the recording pill comes in.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

RowLayout {
    id: swatches

    required property var model

    spacing: Theme.spaceSmall

    Repeater {
        id: row

        model: swatches.model.pillColors

        RadioButton {
            id: swatch

            required property var modelData
            required property int index
            readonly property bool isChosen: swatches.model.dictationPillColor === modelData.value

            implicitWidth: 64
            implicitHeight: 34
            hoverEnabled: true
            focusPolicy: Qt.StrongFocus
            text: modelData.name
            checked: isChosen
            padding: 0
            indicator: null
            Accessible.name: text
            Accessible.onPressAction: if (enabled) clicked()
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            Keys.onRightPressed: row.choose(index + (mirrored ? -1 : 1))
            Keys.onLeftPressed: row.choose(index + (mirrored ? 1 : -1))
            onClicked: {
                swatches.model.dictationPillColor = modelData.value
                checked = Qt.binding(() => isChosen)
            }

            background: Rectangle {
                radius: height / 2
                color: "transparent"
                border.width: swatch.isChosen ? 2 : 0
                border.color: Theme.accent

                FocusRing {
                    target: swatch
                    radius: height / 2
                }
            }
            contentItem: Item {
                Rectangle {
                    anchors.centerIn: parent
                    width: 54
                    height: 24
                    radius: 12
                    color: swatch.modelData.fill
                    border.width: 1
                    border.color: Theme.line

                    Row {
                        anchors.centerIn: parent
                        spacing: 2

                        Repeater {
                            model: [5, 10, 14, 8, 12, 6]

                            Rectangle {
                                required property int modelData

                                anchors.verticalCenter: parent.verticalCenter
                                width: 2
                                height: modelData
                                radius: 1
                                color: swatch.modelData.wave
                            }
                        }
                    }
                }
            }
        }

        function choose(index) {
            const item = itemAt((index + count) % count)
            item.forceActiveFocus(Qt.TabFocusReason)
            item.clicked()
        }
    }
}
