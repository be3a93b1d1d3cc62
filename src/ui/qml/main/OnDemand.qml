// Makes what it holds when it is first wanted, and keeps it from then on.
import QtQuick

Loader {
    property bool isWanted: false

    active: false
    onIsWantedChanged: if (isWanted) active = true
    Component.onCompleted: if (isWanted) active = true
}
