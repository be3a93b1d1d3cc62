// What a field to write in stands on.
import QtQuick

Rectangle {
    property bool hasFocus: false

    radius: Theme.radiusSmall
    color: Theme.field
    border.width: hasFocus ? 2 : 1
    border.color: hasFocus ? Theme.accent : Theme.line
}
