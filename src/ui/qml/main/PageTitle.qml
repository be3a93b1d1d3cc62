// The title of a tab.
import QtQuick
import "../common"

Text {
    color: Theme.text
    font.pixelSize: Theme.fontHeading
    font.weight: Font.Bold
    elide: Text.ElideRight
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
