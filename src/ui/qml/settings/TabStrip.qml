// The two tabs of the settings, side by side.
import QtQuick
import QtQuick.Layouts
import "../common"
import "../main"

Rectangle {
    id: strip

    required property var navigation

    implicitWidth: row.implicitWidth + 2 * Theme.spaceTiny
    implicitHeight: row.implicitHeight + 2 * Theme.spaceTiny
    radius: Theme.radius
    color: Theme.sidebar
    Accessible.role: Accessible.PageTabList
    Accessible.name: qsTr("Settings")

    RowLayout {
        id: row

        anchors.centerIn: parent
        spacing: Theme.spaceTiny

        Repeater {
            id: tabs

            model: [
                {name: "account", label: qsTr("Account"), symbol: "person.crop.circle"},
                {name: "system", label: qsTr("System"), symbol: "gearshape"}
            ]

            PageTab {
                required property var modelData
                required property int index

                Layout.preferredWidth: 140
                text: modelData.label
                symbol: modelData.symbol
                isSelected: strip.navigation.tab === modelData.name
                onClicked: strip.navigation.tab = modelData.name
                Keys.onRightPressed: tabs.focusTab(index + (mirrored ? -1 : 1))
                Keys.onLeftPressed: tabs.focusTab(index + (mirrored ? 1 : -1))
            }

            function focusTab(index) {
                const item = itemAt((index + count) % count)
                item.forceActiveFocus(Qt.TabFocusReason)
                item.clicked()
            }
        }
    }
}
