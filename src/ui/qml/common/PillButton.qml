// A button as a capsule, with a symbol before or after its words; lighter under the pointer, dimmer
// while it is pressed.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

AbstractButton {
    id: button

    property string symbol
    property string trailingSymbol
    property bool isProminent: false
    property bool isDestructive: false
    property bool isBusy: false
    /// What its words leave open to somebody who doesn't see where it stands.
    property string explanation
    /// For a symbol that points somewhere.
    property bool mirrorsSymbol: false

    readonly property color contentColor: isProminent ? Theme.textOnAccent : isDestructive ? Theme.danger : Theme.text
    readonly property color restingColor: isProminent ? Theme.accent : Theme.card

    implicitHeight: 34
    leftPadding: 16
    rightPadding: 16
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    // What is under way is to be read, although it can't be pressed.
    opacity: enabled || isBusy ? 1 : 0.5
    Accessible.role: Accessible.Button
    Accessible.name: text
    // Qt tells assistive tools of no button that it is disabled.
    Accessible.description: [explanation, enabled ? "" : qsTr("Not available now")].filter(part => part).join(". ")
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: height / 2
        color: button.down ? Qt.darker(button.restingColor, 1.12) : !button.hovered ? button.restingColor : button.isProminent ? Qt.lighter(button.restingColor, 1.12) : Theme.hoveredCard
        border.width: button.isProminent ? 0 : 1
        border.color: Theme.line

        FocusRing {
            target: button
            radius: height / 2
        }
    }
    contentItem: Item {
        implicitWidth: row.implicitWidth
        implicitHeight: row.implicitHeight

        RowLayout {
            id: row

            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width)
            spacing: Theme.spaceSmall

            Spinner {
                running: button.isBusy
                color: button.contentColor
            }
            Symbol {
                visible: button.symbol.length > 0 && !button.isBusy
                name: button.symbol
                size: 16
                color: button.contentColor
                isMirrored: button.mirrorsSymbol && button.mirrored
            }
            Text {
                Layout.fillWidth: true
                text: button.text
                color: button.contentColor
                font.pixelSize: Theme.fontBody
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
            }
            Symbol {
                visible: button.trailingSymbol.length > 0
                name: button.trailingSymbol
                size: 14
                color: button.contentColor
            }
        }
    }
}
