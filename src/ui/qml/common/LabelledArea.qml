// Several lines of text to fill in, under the words that say what goes there. Tab goes on, as it
// does in a single line.
import QtQuick
import QtQuick.Controls.Basic

Column {
    id: labelled

    property string label
    property string text
    signal edited(string text)

    spacing: 6
    onTextChanged: if (text !== area.text) area.text = text

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
    ScrollView {
        width: parent.width
        height: 120
        // As those of a page, which are for the pointer.
        ScrollBar.horizontal.policy: ScrollBar.AlwaysOff
        Component.onCompleted: ScrollBar.vertical.Accessible.ignored = true

        background: FieldBackground {
            hasFocus: area.activeFocus
        }

        TextArea {
            id: area

            padding: 12
            color: Theme.text
            selectionColor: Theme.accent
            selectedTextColor: Theme.textOnAccent
            selectByMouse: true
            horizontalAlignment: TextEdit.AlignLeft
            wrapMode: TextArea.Wrap
            textFormat: TextEdit.PlainText
            font.pixelSize: Theme.fontBody
            background: null
            Accessible.name: labelled.label
            KeyNavigation.priority: KeyNavigation.BeforeItem
            Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            onTextChanged: if (text !== labelled.text) labelled.edited(text)
        }
    }
}
