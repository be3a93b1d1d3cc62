// The settings window's content: two tabs, and the sheets over them.
import QtQuick
import QtQuick.Layouts
import "../common"
import "../main"

Rectangle {
    id: window

    required property var model

    implicitWidth: 760
    implicitHeight: 640
    width: 760
    height: 640
    color: Theme.window
    LayoutMirroring.enabled: Theme.isRightToLeft
    LayoutMirroring.childrenInherit: true

    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: window.model.quit()
    }
    Shortcut {
        sequence: "Ctrl+W"
        onActivated: window.Window.window.close()
    }
    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        TabStrip {
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.spaceMedium
            Layout.bottomMargin: Theme.spaceSmall
            navigation: window.model.navigation
        }
        Loader {
            Layout.fillWidth: true
            Layout.fillHeight: true
            focus: true
            sourceComponent: window.model.navigation.tab === "account" ? account : system
        }
    }
    Component {
        id: account

        AccountTab {
            model: window.model.account
        }
    }
    Component {
        id: system

        SystemTab {
            model: window.model
        }
    }
    RecorderSheet {
        model: window.model.recorder
    }
    SlackSheet {
        model: window.model.slack
    }
    DeleteDialog {
        model: window.model.account
    }
    AlertDialog {
        model: window.model.account
    }
    FolderSheet {
        model: window.model.folderChooser
    }
    TabPlace {}
    ToastBanner {
        model: window.model.toast
    }
    Connections {
        target: window.model

        function onCloseRequested() {
            window.Window.window.close()
        }
    }
}
