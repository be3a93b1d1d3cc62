// A sheet over a window: dims what is behind it, keeps the keyboard inside, and goes with Escape.
//
// Whether it is shown is its model's matter: `isShown` is bound, and `dismissed` asks for the end.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T

Popup {
    id: sheet

    default property alias content: body.data
    property bool isShown: false
    property string title
    signal dismissed

    anchors.centerIn: parent
    width: Math.min(460, parent ? parent.width - 2 * Theme.spaceLarge : 460)
    padding: Theme.spaceLarge - Theme.spaceSmall
    modal: true
    dim: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    visible: isShown
    onAboutToShow: focusReturn.remember(parent)
    onClosed: {
        focusReturn.giveBack()
        if (isShown)
            dismissed()
    }
    T.Overlay.modal: Rectangle {
        color: Theme.scrim
    }
    onOpened: body.nextItemInFocusChain().forceActiveFocus(Qt.PopupFocusReason)

    readonly property FocusReturn focusReturn: FocusReturn {}
    readonly property PopupName popupName: PopupName {
        popup: sheet
        value: sheet.title
    }

    background: Rectangle {
        radius: Theme.radius + Theme.spaceTiny
        color: Theme.card
        border.width: 1
        border.color: Theme.line
    }
    contentItem: Column {
        spacing: Theme.spaceSmall
        LayoutMirroring.enabled: Theme.isRightToLeft
        LayoutMirroring.childrenInherit: true

        Text {
            width: parent.width
            text: sheet.title
            color: Theme.text
            font.pixelSize: Theme.fontTitle
            font.weight: Font.Bold
            horizontalAlignment: Text.AlignLeft
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        FocusScope {
            id: body

            width: parent.width
            implicitHeight: childrenRect.height
            focus: true
        }
    }
}
