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
    onClicked: menu.visible ? menu.close() : menu.open()

    ChoiceMenu {
        id: menu

        y: button.height + Theme.spaceTiny
        choices: button.model.languages
        onChosen: code => button.model.chooseLanguage(code)
    }
}
