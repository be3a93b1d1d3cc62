// One row of the program's menu: a line of text, a button, a switch or a divider.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

MenuItem {
    id: row

    required property var modelData
    readonly property bool isDivider: modelData.kind === "divider"

    implicitHeight: isDivider ? 9 : 32
    padding: 0
    enabled: !isDivider && modelData.kind !== "line" && modelData.isEnabled
    text: modelData.text ?? ""
    checked: modelData.isChecked ?? false
    Accessible.name: text
    Accessible.ignored: isDivider
    Accessible.onPressAction: if (enabled) triggered()
    Accessible.role: isDivider ? Accessible.Separator : Accessible.MenuItem

    LayoutMirroring.enabled: Theme.isRightToLeft
    LayoutMirroring.childrenInherit: true

    indicator: null
    background: Rectangle {
        radius: Theme.radiusSmall
        color: row.highlighted ? Theme.selection : "transparent"

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
            height: 1
            visible: row.isDivider
            color: Theme.line
        }
    }
    contentItem: Text {
        leftPadding: Theme.spaceSmall
        rightPadding: Theme.spaceSmall
        visible: !row.isDivider
        text: row.modelData.kind === "toggle" && row.checked ? "✓ " + row.text : row.text
        color: row.enabled ? Theme.text : Theme.secondaryText
        font.pixelSize: Theme.fontBody
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        textFormat: Text.PlainText
    }
}
