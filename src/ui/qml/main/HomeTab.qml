// How to dictate, what is still missing for it, and what has been dictated.
import QtQuick
import QtQuick.Layouts
import "../common"

TabPage {
    id: tab

    required property var model

    GridLayout {
        Layout.fillWidth: true
        columns: tab.width < 620 ? 1 : 2
        columnSpacing: Theme.spaceMedium
        rowSpacing: Theme.spaceSmall

        Text {
            Layout.fillWidth: true
            text: tab.model.home.keysLine
            horizontalAlignment: Text.AlignLeft
            color: Theme.text
            font.pixelSize: Theme.fontTitle
            font.weight: Font.DemiBold
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        LanguageMenu {
            Layout.alignment: Qt.AlignTop
            Layout.maximumWidth: parent.width
            model: tab.model.home
        }
    }
    PermissionCard {
        Layout.fillWidth: true
        visible: tab.model.home.needsMicrophone
        symbol: "mic.fill"
        title: qsTr("Microphone Access")
        text: qsTr("Required for voice dictation and audio recording")
        onGranting: tab.model.home.grantMicrophone()
    }
    PermissionCard {
        Layout.fillWidth: true
        visible: tab.model.home.needsAccessibility
        symbol: "hand.raised.fill"
        title: qsTr("Accessibility Access")
        text: qsTr("Required to automatically insert transcribed text into textboxes")
        onGranting: tab.model.home.grantAccessibility()
    }
    DictationCard {
        Layout.fillWidth: true
        model: tab.model.home
    }
    SlackCard {
        Layout.fillWidth: true
        model: tab.model.slack
    }
    SectionTitle {
        Layout.fillWidth: true
        Layout.topMargin: Theme.spaceSmall
        text: qsTr("Recent Transcriptions")
    }
    EmptyPlace {
        Layout.fillWidth: true
        visible: tab.model.home.history.count === 0
        symbol: "waveform"
        title: qsTr("No transcriptions yet")
        text: tab.model.home.emptyText
    }
    Card {
        Layout.fillWidth: true
        visible: tab.model.home.history.count > 0
        padding: 0

        Column {
            id: history

            width: parent.width

            Repeater {
                model: tab.model.home.history

                HistoryRow {
                    width: history.width
                    onCopying: tab.model.home.history.copy(index)
                }
            }
        }
    }
}
