// What a list is for, with sample rows that aren't the user's.
import QtQuick
import QtQuick.Layouts
import "../common"

Card {
    id: explainer

    required property string question
    required property string answer
    required property var samples

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceSmall

        SectionTitle {
            Layout.fillWidth: true
            text: explainer.question
        }
        Text {
            Layout.fillWidth: true
            text: explainer.answer
            horizontalAlignment: Text.AlignLeft
            color: Theme.secondaryText
            font.pixelSize: Theme.fontBody
            lineHeight: 1.3
            wrapMode: Text.Wrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Repeater {
            model: explainer.samples

            RowLayout {
                id: sample

                required property var modelData

                Layout.fillWidth: true
                spacing: Theme.spaceSmall
                Accessible.role: Accessible.StaticText
                Accessible.name: qsTr("%1, written as %2").arg(modelData.spoken).arg(modelData.written)

                Text {
                    Layout.preferredWidth: explainer.width * 0.3
                    text: sample.modelData.spoken
                    color: Theme.text
                    font.pixelSize: Theme.fontSmall
                    font.italic: true
                    horizontalAlignment: Text.AlignLeft
                    elide: Text.ElideRight
                }
                Symbol {
                    name: "arrow.right"
                    size: 14
                    color: Theme.secondaryText
                    isMirrored: explainer.LayoutMirroring.enabled
                }
                Text {
                    Layout.fillWidth: true
                    text: sample.modelData.written
                    color: Theme.text
                    font.pixelSize: Theme.fontSmall
                    horizontalAlignment: Text.AlignLeft
                    elide: Text.ElideRight
                }
            }
        }
    }
}
