// Who is signed in, and the end of the account.
import QtQuick
import QtQuick.Layouts
import "../common"
import "../main"

TabPage {
    id: page

    required property var model

    Section {
        title: qsTr("Profile")

        Loader {
            Layout.fillWidth: true
            Layout.topMargin: Theme.spaceSmall
            Layout.bottomMargin: Theme.spaceSmall
            sourceComponent: page.model.isSignedIn ? profile : nobody
        }
    }
    Section {
        title: qsTr("Delete account")
        visible: page.model.isSignedIn

        SettingRow {
            isFirst: true
            explanation: qsTr("Permanently deletes your Vemo account, dictation history, dictionary and usage data.")

            PillButton {
                text: page.model.deleteLabel
                isDestructive: true
                isBusy: page.model.isDeletingAccount
                enabled: !page.model.isDeletingAccount
                onClicked: page.model.askToDelete()
            }
        }
    }
    Component {
        id: profile

        ProfileCard {
            model: page.model
        }
    }
    Component {
        id: nobody

        SignedOutRow {
            model: page.model
        }
    }
}
