// Something that Vemo can't dictate without, with the button that asks for it.
import QtQuick
import QtQuick.Layouts
import "../common"

Card {
    id: card

    required property string symbol
    required property string title
    required property string text
    signal granting

    RowLayout {
        width: parent.width
        spacing: Theme.spaceMedium

        Feature {
            Layout.fillWidth: true
            symbol: card.symbol
            title: card.title
            text: card.text
        }
        PillButton {
            text: qsTr("Grant Access")
            isProminent: true
            explanation: card.title
            onClicked: card.granting()
        }
    }
}
