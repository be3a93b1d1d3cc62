// The title of a tab.
import QtQuick
import "../common"

Text {
    horizontalAlignment: Text.AlignLeft
    color: Theme.text
    font.pixelSize: Theme.fontHeading
    font.weight: Font.Bold
    elide: Text.ElideRight
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
