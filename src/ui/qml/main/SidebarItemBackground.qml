// What a row of the sidebar stands on.
import QtQuick
import QtQuick.Templates as T
import "../common"

Rectangle {
    id: background

    required property T.AbstractButton row
    property bool isSelected: false

    radius: Theme.radiusSmall
    color: isSelected ? Theme.selection : row.hovered || row.down ? Theme.hover : "transparent"

    FocusRing {
        target: background.row
    }
}
