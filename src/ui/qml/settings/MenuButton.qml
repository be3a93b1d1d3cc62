// A button that shows the choice in force and drops the menu of all.
import QtQuick
import "../common"
import "../main"

PillButton {
    id: button

    property var choices: []
    signal chosen(string code)

    trailingSymbol: "chevron.up.chevron.down"
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
                choiceMenu.visible ? choiceMenu.close() : choiceMenu.open()
            }

            ChoiceMenu {
                id: choiceMenu

                x: button.mirrored ? 0 : button.width - width
                y: button.height + Theme.spaceTiny
                name: button.explanation
                choices: button.choices
                onChosen: code => button.chosen(code)
            }
        }
    }
}
