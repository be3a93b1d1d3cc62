// What dictating has brought the user so far.
import QtQuick
import QtQuick.Layouts
import "../common"

TabPage {
    id: tab

    required property var model

    RowLayout {
        Layout.fillWidth: true

        PageTitle {
            Layout.fillWidth: true
            text: qsTr("Stats & Analytics")
        }
        PillButton {
            text: qsTr("Refresh")
            symbol: "arrow.clockwise"
            isBusy: tab.model.showsProgress
            onClicked: tab.model.refresh()
        }
    }
    GridLayout {
        Layout.fillWidth: true
        columns: tab.width < 520 ? 1 : 2
        columnSpacing: Theme.spaceMedium
        rowSpacing: Theme.spaceMedium

        StatCard {
            title: qsTr("Dictation Speed")
            value: tab.model.speed
            badge: tab.model.speedComparison
            detail: tab.model.speedLine
        }
        StatCard {
            title: qsTr("Time Saved")
            value: tab.model.timeSaved
            badge: qsTr("Productivity Boost")
            badgeSymbol: "clock.badge.checkmark.fill"
            detail: tab.model.timeSavedDetail
        }
        StatCard {
            title: qsTr("Voice Audio")
            value: tab.model.audio
            unit: tab.model.audioUnit
            badge: qsTr("Total audio processed")
            badgeSymbol: "waveform"
        }
        StatCard {
            title: qsTr("Total Dictations")
            value: tab.model.dictations
            unit: qsTr("sessions")
            badge: qsTr("Completed requests")
            badgeSymbol: "mic.fill"
        }
    }
    SpeedComparison {
        Layout.fillWidth: true
    }
}
