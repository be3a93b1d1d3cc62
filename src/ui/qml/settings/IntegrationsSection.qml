// What dictation knows of editors, of the project, and of Slack.
import QtQuick
import QtQuick.Layouts
import "../common"

Section {
    id: section

    required property var model
    readonly property var codebase: model.codebase

    title: qsTr("Integrations")

    SwitchRow {
        isFirst: true
        title: qsTr("File tagging in Antigravity, VS Code & Cursor")
        tag: qsTr("Preview")
        explanation: qsTr("Automatically tag filenames with '@' while dictating in Antigravity, VS Code, Cursor, Windsurf, or Xcode. (Companion extension integration in preview).")
        isOn: section.model.system.integrationVSCode
        onSwitched: isOn => section.model.system.integrationVSCode = isOn
    }
    SwitchRow {
        title: qsTr("Tagging in Slack")
        tag: qsTr("Preview")
        explanation: qsTr("Say 'mention Name' while dictating in Slack to insert an @mention. (Slack integration in preview).")
        isOn: section.model.system.integrationSlack
        onSwitched: isOn => section.model.system.integrationSlack = isOn
    }
    SettingRow {
        title: qsTr("Active Codebase Context")
        tag: qsTr("Preview")
        explanation: qsTr("Auto-indexes the active project in Antigravity, Cursor, VS Code, or Xcode for accurate @file matching.")

        PillButton {
            text: section.codebase.modeLabel
            enabled: section.codebase.isManual
            opacity: 1
            explanation: section.codebase.isManual ? qsTr("Returns to automatic detection") : ""
            onClicked: section.codebase.detectAutomatically()
        }
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.spaceSmall + Theme.spaceTiny
        spacing: Theme.spaceSmall

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            Text {
                Layout.fillWidth: true
                visible: text.length > 0
                text: section.codebase.workspacePath
                color: Theme.text
                font.pixelSize: Theme.fontSmall
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideMiddle
                textFormat: Text.PlainText
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Text {
                Layout.fillWidth: true
                text: section.codebase.countText
                color: Theme.secondaryText
                font.pixelSize: Theme.fontSmall
                horizontalAlignment: Text.AlignLeft
                wrapMode: Text.Wrap
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        PillButton {
            text: qsTr("Choose Folder…")
            onClicked: section.codebase.chooseFolder()
        }
        PillButton {
            text: section.codebase.rescanLabel
            symbol: "arrow.clockwise"
            isBusy: section.codebase.isScanning
            enabled: !section.codebase.isScanning
            onClicked: section.codebase.rescan()
        }
    }
    SettingRow {
        title: qsTr("Slack Workspace Sync")
        tag: qsTr("Preview")
        explanation: qsTr("Connect your Slack API Token to sync team member names and channels for 100% accurate @mention and #channel voice insertion.")

        PillButton {
            text: section.model.slack.isConnected ? qsTr("Sync Again…") : qsTr("Connect…")
            explanation: qsTr("Slack Workspace Sync")
            onClicked: section.model.slack.open()
        }
    }
    Text {
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.spaceSmall + Theme.spaceTiny
        text: qsTr("Slack integration is currently in preview.")
        color: Theme.secondaryText
        font.pixelSize: Theme.fontSmall
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        textFormat: Text.PlainText
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
