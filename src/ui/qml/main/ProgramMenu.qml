// What the desktop's panel offers in its menu, for desktops whose panel shows no such menus.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

SymbolButton {
    id: button

    required property var model

    symbol: "ellipsis"
    text: qsTr("Vemo menu")
    Accessible.role: Accessible.ButtonMenu
    onClicked: {
        menu.isWanted = true
        menu.item.toggle()
    }

    OnDemand {
        id: menu

        anchors.fill: parent
        sourceComponent: Item {
            function toggle() {
                popup.rows = button.model.menu()
                popup.visible ? popup.close() : popup.open()
            }

            Menu {
                id: popup

                property var rows: []

                x: Theme.isRightToLeft ? button.width - width : 0
                y: button.height
                width: 260
                margins: Theme.spaceSmall
                padding: Theme.spaceTiny
                closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutsideParent

                onAboutToShow: focusReturn.remember(button)
                onClosed: focusReturn.giveBack()

                readonly property FocusReturn focusReturn: FocusReturn {}
                readonly property PopupName popupName: PopupName {
                    popup: popup
                    value: button.text
                }

                background: Rectangle {
                    radius: Theme.radius
                    color: Theme.card
                    border.width: 1
                    border.color: Theme.line
                }

                contentItem: ListView {
                    implicitHeight: contentHeight
                    clip: true
                    model: popup.contentModel
                    currentIndex: popup.currentIndex
                    interactive: popup.height < contentHeight
                    ScrollBar.vertical: PointerScrollBar {}
                }

                Instantiator {
                    model: popup.rows
                    delegate: ProgramMenuRow {
                        onTriggered: button.model.pressMenuRow(modelData.identifier)
                    }
                    onObjectAdded: (index, row) => popup.insertItem(index, row)
                    onObjectRemoved: (index, row) => popup.removeItem(row)
                }
            }
        }
    }
}
