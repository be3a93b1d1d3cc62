// A menu of choices, of which one is in force. Rows have `code`, `text` and `isCurrent`.
import QtQuick
import QtQuick.Controls.Basic

Popup {
    id: menu

    property var choices: []
    /// What is chosen here.
    required property string name
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
    readonly property PopupName popupName: PopupName {
        popup: menu
        value: menu.name
    }

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
        Accessible.name: menu.name
        LayoutMirroring.enabled: Theme.isRightToLeft
        LayoutMirroring.childrenInherit: true
        ScrollBar.vertical: PointerScrollBar {}
        Keys.onReturnPressed: menu.choose(currentIndex)
        Keys.onEnterPressed: menu.choose(currentIndex)
        Keys.onSpacePressed: menu.choose(currentIndex)

        delegate: ChoiceMenuRow {
            width: list.width
            onPointed: list.currentIndex = index
            onChosen: menu.choose(index)
        }
    }
}
