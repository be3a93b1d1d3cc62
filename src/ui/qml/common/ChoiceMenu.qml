// A menu of choices, of which one is in force. Rows have `code`, `text` and `isCurrent`.
import QtQuick
import QtQuick.Controls.Basic

Popup {
    id: menu

    property var choices: []
    signal chosen(string code)

    width: 320
    height: Math.min(implicitHeight, 360)
    padding: Theme.spaceTiny
    margins: Theme.spaceSmall
    modal: false
    focus: true
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutsideParent

    onAboutToShow: focusReturn.remember(parent)
    onClosed: focusReturn.giveBack()
    onOpened: {
        list.currentIndex = Math.max(0, choices.findIndex(choice => choice.isCurrent))
        list.positionViewAtIndex(list.currentIndex, ListView.Center)
        list.forceActiveFocus()
    }

    function choose(index) {
        close()
        chosen(choices[index].code)
    }

    readonly property FocusReturn focusReturn: FocusReturn {}

    background: Rectangle {
        radius: Theme.radius
        color: Theme.card
        border.width: 1
        border.color: Theme.line
    }
    contentItem: ListView {
        id: list

        implicitHeight: contentHeight
        clip: true
        model: menu.choices
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationWraps: true
        highlightMoveDuration: 0
        Accessible.role: Accessible.PopupMenu
        LayoutMirroring.enabled: Theme.isRightToLeft
        LayoutMirroring.childrenInherit: true
        ScrollBar.vertical: ScrollBar {}
        Keys.onReturnPressed: menu.choose(currentIndex)
        Keys.onEnterPressed: menu.choose(currentIndex)
        Keys.onSpacePressed: menu.choose(currentIndex)

        delegate: AbstractButton {
            id: choice

            required property int index
            required property var modelData

            width: list.width
            implicitHeight: 34
            hoverEnabled: true
            focusPolicy: Qt.NoFocus
            text: modelData.text
            Accessible.role: Accessible.MenuItem
            Accessible.name: text
            Accessible.onPressAction: if (enabled) clicked()
            Accessible.checked: modelData.isCurrent
            onHoveredChanged: if (hovered) list.currentIndex = index
            onClicked: menu.choose(index)

            background: Rectangle {
                radius: Theme.radiusSmall
                color: choice.ListView.isCurrentItem ? Theme.selection : "transparent"
            }
            contentItem: Text {
                leftPadding: Theme.spaceTiny
                rightPadding: Theme.spaceTiny
                text: choice.text
                color: Theme.text
                font.pixelSize: Theme.fontBody
                horizontalAlignment: Text.AlignLeft
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
                textFormat: Text.PlainText
            }
        }
    }
}
