// A setting that is on or off.
import QtQuick

SettingRow {
    id: row

    property bool isOn: false
    property bool isActive: true
    signal switched(bool isOn)

    Toggle {
        name: row.title
        isOn: row.isOn
        enabled: row.isActive
        onSwitched: isOn => row.switched(isOn)
    }
}
