// Every setting of the program, in ten sections.
import QtQuick
import QtQuick.Layouts
import "../common"
import "../main"

TabPage {
    id: page

    required property var model
    readonly property var system: model.system

    Section {
        title: qsTr("Speech & AI Engine")

        SettingRow {
            isFirst: true
            title: qsTr("Dictation Language")
            explanation: qsTr("Select spoken language or use Auto-Detect across 23 languages.")

            MenuButton {
                text: page.system.languageName
                choices: page.system.languages
                explanation: qsTr("Dictation Language")
                onChosen: code => page.system.selectedLanguage = code
            }
        }
        SettingRow {
            title: qsTr("Script / Output Mode")
            explanation: qsTr("Choose whether speech is transcribed to Latin/English or native script.")

            MenuButton {
                text: page.system.modeLabel
                choices: page.system.modes
                explanation: qsTr("Script / Output Mode")
                onChosen: code => page.system.selectedDictateMode = code
            }
        }
    }
    Section {
        title: qsTr("Hotkeys")

        HotkeyRow {
            isFirst: true
            title: qsTr("Push to talk")
            explanation: qsTr("Hold down the key to speak, release to transcribe & insert text.")
            keyName: page.system.selectedPTTHotkey
            onRecording: page.model.recorder.openForPushToTalk()
        }
        HotkeyRow {
            title: qsTr("Start / Stop mic")
            explanation: qsTr("Tap once to start recording, tap again to finish and insert text.")
            keyName: page.system.selectedToggleHotkey
            onRecording: page.model.recorder.openForToggle()
        }
    }
    Section {
        title: qsTr("App settings")

        SwitchRow {
            isFirst: true
            title: qsTr("Launch app at login")
            isOn: page.system.launchAtLogin
            onSwitched: isOn => page.system.launchAtLogin = isOn
        }
        SwitchRow {
            title: qsTr("Show app in dock")
            isOn: page.system.showInDock
            onSwitched: isOn => page.system.showInDock = isOn
        }
    }
    Section {
        title: qsTr("Appearance")

        SettingRow {
            isFirst: true
            title: qsTr("Dictation pill color")

            PillSwatches {
                model: page.system
            }
        }
    }
    Section {
        title: qsTr("Sound")

        SwitchRow {
            isFirst: true
            title: qsTr("Dictation & notification sounds")
            isOn: page.system.dictationSounds
            onSwitched: isOn => page.system.dictationSounds = isOn
        }
    }
    IntegrationsSection {
        model: page.model
    }
    Section {
        title: qsTr("Permissions")

        PermissionRow {
            isFirst: true
            symbol: "mic.fill"
            title: qsTr("Microphone Access")
            explanation: qsTr("Required for voice dictation and audio recording")
            isGranted: page.system.isMicrophoneGranted
            onGranting: page.system.grantMicrophone()
        }
        PermissionRow {
            symbol: "hand.raised.fill"
            title: qsTr("Accessibility Access")
            explanation: qsTr("Required to automatically insert transcribed text into textboxes")
            isGranted: page.system.isAccessibilityGranted
            onGranting: page.system.grantAccessibility()
        }
    }
    UpdatesSection {
        model: page.model.updates
    }
    Section {
        title: qsTr("Privacy")

        SwitchRow {
            isFirst: true
            title: qsTr("Share usage statistics")
            isOn: page.system.shareUsageStatistics
            onSwitched: isOn => page.system.shareUsageStatistics = isOn
        }
        LinkedText {
            Layout.fillWidth: true
            Layout.bottomMargin: Theme.spaceSmall + Theme.spaceTiny
            words: page.system.privacyNote
        }
    }
    Section {
        title: qsTr("Account")

        SettingRow {
            isFirst: true
            visible: page.model.account.isSignedIn
            title: qsTr("Signed in: %1").arg(page.model.account.email || qsTr("unknown"))

            PillButton {
                text: qsTr("Sign Out")
                symbol: "rectangle.portrait.and.arrow.right"
                mirrorsSymbol: true
                onClicked: page.model.account.signOut()
            }
        }
        SignedOutRow {
            Layout.fillWidth: true
            Layout.topMargin: Theme.spaceSmall
            Layout.bottomMargin: Theme.spaceSmall
            visible: !page.model.account.isSignedIn
            model: page.model.account
        }
    }
}
