// A symbol by its name, in one colour; decoration, since whatever it stands beside says the same.
import QtQuick

Image {
    id: symbol

    property string name
    property int size: 20
    property color color: Theme.text
    /// For symbols that point somewhere: turns them around where text runs from right to left.
    property bool isMirrored: false

    width: size
    height: size
    sourceSize: Qt.size(size, size)
    source: name ? "image://symbols/" + name + "/" + color.toString().slice(-6) : ""
    mirror: isMirrored
    Accessible.ignored: true
}
