// An update that is ready to be installed, with its release notes on request.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

Card {
    id: card

    required property var model

    padding: Theme.spaceSmall

    ColumnLayout {
        width: parent.width
        spacing: Theme.spaceSmall

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spaceSmall

            Symbol {
                name: "arrow.down.circle.fill"
                size: 24
                color: Theme.accent
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 0

                Text {
                    Layout.fillWidth: true
                    text: qsTr("Update ready")
                    color: Theme.text
                    font.pixelSize: Theme.fontBody
                    font.weight: Font.DemiBold
                    horizontalAlignment: Text.AlignLeft
                    elide: Text.ElideRight
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Text {
                    Layout.fillWidth: true
                    text: card.model.versionLine
                    color: Theme.secondaryText
                    font.pixelSize: Theme.fontSmall
                    horizontalAlignment: Text.AlignLeft
                    elide: Text.ElideRight
                    textFormat: Text.PlainText
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
        }
        PillButton {
            id: restart

            Layout.fillWidth: true
            leftPadding: Theme.spaceTiny
            rightPadding: Theme.spaceTiny
            text: qsTr("Restart to Update")
            isProminent: true
            enabled: card.model.canRestart
            explanation: card.model.tooltip
            onClicked: card.model.restart()

            // A disabled button has no pointer of its own, and is the one that needs explaining.
            HoverHandler {
                id: pointer
            }
            ToolTip.visible: pointer.hovered
            ToolTip.delay: 500
            ToolTip.text: card.model.tooltip
        }
        PillButton {
            Layout.fillWidth: true
            visible: card.model.hasNotes
            text: qsTr("What's new")
            onClicked: card.model.toggleNotes()
        }
    }
    Popup {
        id: notes

        x: Theme.isRightToLeft ? -width - Theme.spaceMedium : card.width + Theme.spaceMedium
        y: card.height - height
        padding: 0
        margins: Theme.spaceSmall
        visible: card.model.showNotes
        closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutsideParent
        focus: true

        readonly property FocusReturn focusReturn: FocusReturn {}
        readonly property PopupName popupName: PopupName {
            popup: notes
            value: qsTr("What's new")
        }
        onAboutToShow: focusReturn.remember(card)
        onClosed: {
            focusReturn.giveBack()
            if (card.model.showNotes)
                card.model.toggleNotes()
        }

        background: Rectangle {
            radius: Theme.radius
            color: Theme.card
            border.width: 1
            border.color: Theme.line
        }
        contentItem: ReleaseNotes {
            pages: card.model.notes
        }
    }
}
