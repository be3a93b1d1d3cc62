// Where the Tab key goes on from when what had the keyboard went out of use, such as a button that can be
// pressed once: from there, and not from the beginning of the window, as Qt has it.
import QtQuick

Item {
    id: place

    readonly property Item focused: Window.window ? Window.window.activeFocusItem : null
    /// The last to have had the keyboard; null when it has gone for good.
    property Item last
    property bool isLost: false

    onFocusedChanged: {
        isLost = last !== null && holds(focused, last)
        if (!isLost)
            last = focused
    }

    /// Qt gives a keyboard that is lost to what was around, or to nobody.
    function holds(around, item) {
        if (around === null)
            return true
        for (let at = item.parent; at; at = at.parent)
            if (at === around)
                return true
        return false
    }

    function go(isForward) {
        last.nextItemInFocusChain(isForward).forceActiveFocus(isForward ? Qt.TabFocusReason : Qt.BacktabFocusReason)
    }

    Shortcut {
        sequence: "Tab"
        enabled: place.isLost && place.last !== null
        onActivated: place.go(true)
    }
    Shortcut {
        sequence: "Shift+Tab"
        enabled: place.isLost && place.last !== null
        onActivated: place.go(false)
    }
}
