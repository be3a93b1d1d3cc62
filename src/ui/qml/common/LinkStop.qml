// A link of a text for the keyboard and assistive tools, as big as the words that it stands over.
import QtQuick

Item {
    id: stop

    required property string words
    required property string address
    /// A Text or a TextEdit.
    required property Item within
    readonly property bool visualFocus: activeFocus

    activeFocusOnTab: true
    Accessible.role: Accessible.Link
    Accessible.name: words
    Accessible.focusable: true
    Accessible.onPressAction: open()
    Keys.onReturnPressed: open()
    Keys.onEnterPressed: open()
    Keys.onSpacePressed: open()
    Component.onCompleted: place()

    function open() {
        within.linkActivated(address)
    }

    /// Qt tells which link is at a point, and not where a link is.
    function place() {
        let left = within.width, top = within.height, right = 0, bottom = 0
        for (let y = 2; y < within.height; y += 4) {
            for (let x = 2; x < within.width; x += 4) {
                if (within.linkAt(x, y) !== address)
                    continue
                left = Math.min(left, x - 2)
                top = Math.min(top, y - 2)
                right = Math.max(right, x + 2)
                bottom = Math.max(bottom, y + 2)
            }
        }
        x = left
        y = top
        width = Math.max(0, right - left)
        height = Math.max(0, bottom - top)
    }

    Connections {
        target: stop.within

        function onWidthChanged() {
            Qt.callLater(stop.place)
        }
        function onHeightChanged() {
            Qt.callLater(stop.place)
        }
        function onTextChanged() {
            Qt.callLater(stop.place)
        }
    }
    FocusRing {
        target: stop
    }
}
