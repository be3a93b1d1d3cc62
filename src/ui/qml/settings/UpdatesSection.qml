// Looking for updates, and installing the one that waits.
import QtQuick
import QtQuick.Controls.Basic
import "../common"

Section {
    id: section

    required property var model

    title: qsTr("Updates")

    SwitchRow {
        isFirst: true
        title: qsTr("Check for updates automatically")
        isOn: section.model.checksAutomatically
        isActive: section.model.isConfigured
        onSwitched: isOn => section.model.checksAutomatically = isOn
    }
    SwitchRow {
        title: qsTr("Download updates automatically")
        isOn: section.model.downloadsAutomatically
        isActive: section.model.isConfigured
        onSwitched: isOn => section.model.downloadsAutomatically = isOn
    }
    SwitchRow {
        title: qsTr("Get beta updates")
        isOn: section.model.receivesBetaUpdates
        isActive: section.model.isConfigured
        onSwitched: isOn => section.model.receivesBetaUpdates = isOn
    }
    SettingRow {
        explanation: section.model.statusLine

        PillButton {
            id: button

            text: section.model.buttonLabel
            enabled: section.model.isButtonEnabled
            explanation: section.model.tooltip
            onClicked: section.model.press()

            // Also over the disabled button, which is the one that needs explaining.
            HoverHandler {
                id: pointer
            }
            ToolTip.visible: pointer.hovered && ToolTip.text.length > 0
            ToolTip.delay: 500
            ToolTip.text: section.model.tooltip
        }
    }
}
