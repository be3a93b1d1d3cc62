// The language that is dictated in, and the menu that changes it.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

PillButton {
    id: button

    required property var model

    text: model.languageTitle
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
                name: button.text
                choices: button.model.languages
                onChosen: code => button.model.chooseLanguage(code)
            }
        }
    }
}
