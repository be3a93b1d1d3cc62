// The title above a group of rows.
import QtQuick
import "../common"

Text {
    horizontalAlignment: Text.AlignLeft
    color: Theme.text
    font.pixelSize: Theme.fontTitle
    font.weight: Font.DemiBold
    wrapMode: Text.Wrap
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
