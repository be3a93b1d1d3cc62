// A trigger's key, and the button that records another.
import QtQuick
import QtQuick.Layouts
import "../common"

SettingRow {
    id: row

    property string keyName
    signal recording

    Rectangle {
        Layout.maximumWidth: 240
        implicitWidth: Math.min(240, name.implicitWidth + 2 * Theme.spaceMedium)
        implicitHeight: 34
        radius: Theme.radiusSmall
        color: Theme.field
        border.width: 1
        border.color: Theme.line

        Text {
            id: name

            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width - 2 * Theme.spaceSmall)
            text: row.keyName
            color: Theme.text
            font.pixelSize: Theme.fontBody
            elide: Text.ElideRight
            textFormat: Text.PlainText
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
    SymbolButton {
        symbol: "record.circle"
        text: qsTr("Record a shortcut: %1").arg(row.title)
        onClicked: row.recording()
    }
}
