// The name that assistive tools are told of a popup; QML reaches the item that a popup is only from within.
import QtQuick
import QtQuick.Templates as T

Binding {
    required property T.Popup popup

    target: popup.contentItem.parent.Accessible
    property: "name"
}
