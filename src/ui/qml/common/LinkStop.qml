// A link of a text for the keyboard and assistive tools, as big as the words that it stands over.
import QtQuick

Item {
    id: stop

    required property string words
    required property rect place
    readonly property bool visualFocus: activeFocus

    signal opening()

    x: place.x
    y: place.y
    width: place.width
    height: place.height
    activeFocusOnTab: true
    Accessible.role: Accessible.Link
    Accessible.name: words
    Accessible.focusable: true
    Accessible.onPressAction: opening()
    Keys.onReturnPressed: opening()
    Keys.onEnterPressed: opening()
    Keys.onSpacePressed: opening()

    FocusRing {
        target: stop
    }
}
