// A permission: given, or with the button that asks for it.
import QtQuick
import "../common"

SettingRow {
    id: row

    property bool isGranted: false
    signal granting

    Symbol {
        visible: row.isGranted
        name: "checkmark.circle.fill"
        size: 18
        color: Theme.accentText
    }
    Text {
        visible: row.isGranted
        text: qsTr("Granted")
        color: Theme.accentText
        font.pixelSize: Theme.fontBody
        font.weight: Font.DemiBold
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    PillButton {
        visible: !row.isGranted
        text: qsTr("Grant Access")
        isProminent: true
        explanation: row.title
        onClicked: row.granting()
    }
}
