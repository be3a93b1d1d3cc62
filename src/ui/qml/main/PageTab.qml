// The tab of a page, which looks like a row of the sidebar. Qt's own tab button, since Qt lets no other button
// be told as a tab.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

TabButton {
    id: tab

    property string symbol
    property bool isSelected: false

    implicitHeight: 38
    padding: 0
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    checked: isSelected
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()
    Accessible.selected: isSelected

    background: SidebarItemBackground {
        row: tab
        isSelected: tab.isSelected
    }
    contentItem: SidebarItemContent {
        symbol: tab.symbol
        text: tab.text
        isSelected: tab.isSelected
    }
}
