// The main window's content: the sign-in card for nobody, the sidebar and its tabs for somebody.
import QtQuick
import "../common"

Rectangle {
    id: window

    required property var model

    color: Theme.window
    LayoutMirroring.enabled: Theme.isRightToLeft
    LayoutMirroring.childrenInherit: true

    Shortcut {
        sequence: "Ctrl+,"
        onActivated: window.model.openSettings()
    }
    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: window.model.pressMenuRow("quit")
    }
    Shortcut {
        sequence: "Ctrl+Shift+C"
        onActivated: window.model.pressMenuRow("copy last")
    }
    Shortcut {
        sequence: "Ctrl+W"
        onActivated: window.Window.window.close()
    }
    Loader {
        anchors.fill: parent
        focus: true
        sourceComponent: window.model.isSignedIn ? signedIn : signedOut
    }
    Component {
        id: signedOut

        SignInCard {
            model: window.model
        }
    }
    Component {
        id: signedIn

        SignedInContent {
            model: window.model
        }
    }
    TabPlace {}
    ToastBanner {
        model: window.model.toast
    }
}
