// A button that shows a symbol alone, and says its words to whoever asks.
import QtQuick
import QtQuick.Controls.Basic

AbstractButton {
    id: button

    property string symbol

    implicitWidth: 32
    implicitHeight: 32
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    Accessible.name: text
    // Qt tells every button as one that takes the keyboard.
    Accessible.focusable: focusPolicy !== Qt.NoFocus
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Theme.radiusSmall
        color: button.hovered || button.down ? Theme.hover : "transparent"

        FocusRing {
            target: button
        }
    }
    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: button.symbol
            size: 18
            color: Theme.secondaryText
        }
    }
}
