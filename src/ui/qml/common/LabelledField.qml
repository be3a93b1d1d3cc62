// A line of text to fill in, under the words that say what goes there.
import QtQuick
import QtQuick.Controls.Basic

Column {
    id: labelled

    property string label
    property string hint
    property bool isSecure: false
    property alias text: field.text
    property alias readOnly: field.readOnly
    signal edited(string text)
    signal accepted

    spacing: 6

    Text {
        width: parent.width
        text: labelled.label
        color: Theme.text
        font.pixelSize: Theme.fontSmall
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    TextField {
        id: field

        width: parent.width
        height: 38
        leftPadding: 12
        rightPadding: 12
        placeholderText: labelled.hint
        echoMode: labelled.isSecure ? TextInput.Password : TextInput.Normal
        inputMethodHints: labelled.isSecure ? Qt.ImhSensitiveData | Qt.ImhNoPredictiveText : Qt.ImhNone
        color: Theme.text
        placeholderTextColor: Theme.secondaryText
        selectionColor: Theme.accent
        selectedTextColor: Theme.textOnAccent
        selectByMouse: true
        horizontalAlignment: TextInput.AlignLeft
        font.pixelSize: Theme.fontBody
        Accessible.name: labelled.label
        // Qt keeps the name of a secret field to itself, and has the hint for its description.
        Accessible.onDescriptionChanged: describe()
        Component.onCompleted: describe()
        onEnabledChanged: describe()
        // A long text is seen from its beginning until somebody writes in it.
        onTextChanged: if (!activeFocus) cursorPosition = 0
        onActiveFocusChanged: if (activeFocus && focusReason !== Qt.MouseFocusReason) cursorPosition = length
        onTextEdited: labelled.edited(text)
        onAccepted: labelled.accepted()

        function describe() {
            const parts = [labelled.isSecure ? labelled.label : labelled.hint, enabled ? "" : qsTr("Not available now")]
            const words = parts.filter(part => part).join(". ")
            if (Accessible.description !== words)
                Accessible.description = words
        }

        background: FieldBackground {
            hasFocus: field.activeFocus
        }
    }
}
