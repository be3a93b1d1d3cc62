// The sidebar, the tab that is shown beside it, and the sheets over both.
import QtQuick
import "../common"

Item {
    id: view

    required property var model

    Sidebar {
        id: sidebar

        anchors {
            left: parent.left
            top: parent.top
            bottom: parent.bottom
        }
        width: view.width < 720 ? 204 : 216
        model: view.model
    }
    Loader {
        id: tab

        anchors {
            left: sidebar.right
            right: parent.right
            top: parent.top
            bottom: parent.bottom
        }
        sourceComponent: ({
                home: home,
                stats: stats,
                dictionary: dictionary,
                shortcuts: shortcuts
            })[view.model.tab]
    }
    Component {
        id: home

        HomeTab {
            model: view.model
        }
    }
    Component {
        id: stats

        StatsTab {
            model: view.model.stats
        }
    }
    Component {
        id: dictionary

        DictionaryTab {
            phrases: view.model.dictionary
        }
    }
    Component {
        id: shortcuts

        ShortcutsTab {
            phrases: view.model.shortcuts
        }
    }
    OnDemand {
        anchors.fill: parent
        isWanted: view.model.dictionary.sheet.isOpen
        sourceComponent: Item {
            PhraseSheet {
                model: view.model.dictionary.sheet
                addTitle: qsTr("Add Word to Dictionary")
                editTitle: qsTr("Edit Word")
                explanation: qsTr("Vemo will correct this word whenever you dictate.")
                spokenLabel: qsTr("When you say (or common typo)")
                spokenHint: qsTr("e.g. btw or Worcester or memo")
                writtenLabel: qsTr("Replace with (output text)")
                writtenHint: qsTr("e.g. By the way or Worcestershire or vemo")
                addLabel: qsTr("Add to Dictionary")
            }
        }
    }
    OnDemand {
        anchors.fill: parent
        isWanted: view.model.shortcuts.sheet.isOpen
        sourceComponent: Item {
            PhraseSheet {
                model: view.model.shortcuts.sheet
                addTitle: qsTr("Add Shortcut")
                editTitle: qsTr("Edit Shortcut")
                explanation: qsTr("Say a trigger phrase to expand into longer snippets.")
                spokenLabel: qsTr("Trigger Phrase (Say this)")
                spokenHint: qsTr("e.g. my email address or here's my calendar link")
                writtenLabel: qsTr("Expanded Snippet (Vemo types this)")
                addLabel: qsTr("Save Shortcut")
                isMultiLine: true
            }
        }
    }
    OnDemand {
        anchors.fill: parent
        isWanted: view.model.slack.isOpen
        sourceComponent: Item {
            SlackSheet {
                model: view.model.slack
            }
        }
    }
}
