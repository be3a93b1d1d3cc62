// The links of a text for the keyboard and assistive tools, each where its words stand.
import QtQuick

Item {
    id: stops

    /// With `words` and an `address` each; no address comes twice.
    required property var links
    /// A Text or a TextEdit, above whose words this lies.
    required property Item within
    property var places: ({})

    /// One of them has the keyboard.
    signal reached()

    Component.onCompleted: find()

    /// Qt tells which link is at a point, and not where a link is: one look over the text finds them all.
    function find() {
        const found = {}
        for (let y = 2; links.length > 0 && y < within.height; y += 4) {
            for (let x = 2; x < within.width; x += 4) {
                const address = within.linkAt(x, y)
                if (address)
                    found[address] = around(found[address] ?? Qt.rect(x - 2, y - 2, 4, 4), x, y)
            }
        }
        places = found
    }

    function around(place, x, y) {
        const left = Math.min(place.left, x - 2)
        const top = Math.min(place.top, y - 2)
        return Qt.rect(left, top, Math.max(place.right, x + 2) - left, Math.max(place.bottom, y + 2) - top)
    }

    Connections {
        target: stops.within

        function onWidthChanged() {
            Qt.callLater(stops.find)
        }
        function onHeightChanged() {
            Qt.callLater(stops.find)
        }
        function onTextChanged() {
            Qt.callLater(stops.find)
        }
    }
    Repeater {
        model: stops.links

        LinkStop {
            required property var modelData

            words: modelData.words
            place: stops.places[modelData.address] ?? Qt.rect(0, 0, 0, 0)
            onOpening: stops.within.linkActivated(modelData.address)
            onActiveFocusChanged: if (activeFocus) stops.reached()
        }
    }
}
