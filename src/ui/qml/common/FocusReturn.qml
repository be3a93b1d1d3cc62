// Gives the keyboard back to whoever had it before a popup took it; Qt leaves it with nobody.
import QtQuick

QtObject {
    property Item item
    property bool wasShown: false

    function remember(around) {
        item = around.Window.window.activeFocusItem
        wasShown = item !== null && item.visualFocus === true
    }

    function giveBack() {
        if (item && item.visible)
            item.forceActiveFocus(wasShown ? Qt.TabFocusReason : Qt.PopupFocusReason)
        item = null
    }
}
