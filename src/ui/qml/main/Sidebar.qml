// The tabs of the window, and below them an update that waits and the way to the settings.
import QtQuick
import QtQuick.Layouts
import "../common"

Rectangle {
    id: sidebar

    required property var model

    color: Theme.sidebar

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.spaceMedium
        spacing: Theme.spaceTiny

        RowLayout {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.spaceSmall
            Layout.topMargin: Theme.spaceSmall
            Layout.bottomMargin: Theme.spaceMedium
            spacing: Theme.spaceSmall

            Mark {
                Layout.preferredWidth: 28
                Layout.preferredHeight: 28
            }
            Text {
                Layout.fillWidth: true
                text: "Vemo"
                horizontalAlignment: Text.AlignLeft
                color: Theme.text
                font.pixelSize: Theme.fontTitle
                font.weight: Font.DemiBold
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            ProgramMenu {
                model: sidebar.model
            }
        }
        Repeater {
            id: tabs

            model: sidebar.model.tabs

            PageTab {
                required property var modelData
                required property int index

                Layout.fillWidth: true
                text: modelData.label
                symbol: modelData.symbol
                isSelected: sidebar.model.tab === modelData.name
                onClicked: sidebar.model.selectTab(modelData.name)
                Keys.onDownPressed: tabs.focusTab(index + 1)
                Keys.onUpPressed: tabs.focusTab(index - 1)
            }

            function focusTab(index) {
                const item = itemAt((index + count) % count)
                item.forceActiveFocus(Qt.TabFocusReason)
                item.clicked()
            }
        }
        Item {
            Layout.fillHeight: true
        }
        Loader {
            Layout.fillWidth: true
            Layout.bottomMargin: active ? Theme.spaceSmall : 0
            active: sidebar.model.update !== null && sidebar.model.update.isShown
            visible: active
            sourceComponent: UpdateCard {
                model: sidebar.model.update
            }
        }
        SidebarItem {
            Layout.fillWidth: true
            text: qsTr("Settings")
            symbol: "gearshape"
            onClicked: sidebar.model.openSettings()
        }
    }
}
