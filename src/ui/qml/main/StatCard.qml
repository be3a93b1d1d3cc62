// One figure with what it means.
import QtQuick
import QtQuick.Layouts
import "../common"

Card {
    id: card

    required property string title
    required property string value
    property string unit
    property string badge
    property string badgeSymbol
    property string detail

    Layout.fillWidth: true
    Layout.preferredWidth: 1
    Layout.fillHeight: true
    Accessible.role: Accessible.Grouping
    Accessible.name: [title, card.value, card.unit, badge, detail].filter(part => part).join(", ")

    Column {
        width: parent.width
        spacing: Theme.spaceSmall

        Text {
            width: parent.width
            text: card.title
            horizontalAlignment: Text.AlignLeft
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            font.weight: Font.DemiBold
            elide: Text.ElideRight
        }
        Row {
            width: parent.width
            spacing: Theme.spaceSmall

            Text {
                id: value

                width: Math.min(implicitWidth, parent.width - unit.width - parent.spacing)
                text: card.value
                color: Theme.text
                font.pixelSize: Theme.fontFigure
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: Theme.fontBody
                elide: Text.ElideRight
                font.weight: Font.Bold
            }
            Text {
                id: unit

                anchors.baseline: value.baseline
                text: card.unit
                color: Theme.secondaryText
                font.pixelSize: Theme.fontBody
            }
        }
        Row {
            anchors.left: parent.left
            visible: card.badge.length > 0
            spacing: Theme.spaceTiny

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: card.badgeSymbol.length > 0
                name: card.badgeSymbol
                size: 16
                color: Theme.accent
            }
            Text {
                text: card.badge
                color: Theme.accentText
                font.pixelSize: Theme.fontSmall
                font.weight: Font.DemiBold
            }
        }
        Text {
            width: parent.width
            visible: text.length > 0
            text: card.detail
            horizontalAlignment: Text.AlignLeft
            color: Theme.secondaryText
            font.pixelSize: Theme.fontSmall
            lineHeight: 1.25
            wrapMode: Text.Wrap
        }
    }
}
