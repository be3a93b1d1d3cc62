// One row of the sidebar that opens something.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

AbstractButton {
    id: item

    property string symbol

    implicitHeight: 38
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()

    background: SidebarItemBackground {
        row: item
    }
    contentItem: SidebarItemContent {
        symbol: item.symbol
        text: item.text
    }
}
