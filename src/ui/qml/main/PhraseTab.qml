// A list of "say this, write that" rows, of whatever length, with what it is for above it.
//
// The list is one stop of the Tab key: the arrow keys walk through it, Enter changes a row, Delete
// deletes it, and Tab goes on to the buttons of the row.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

ListView {
    id: list

    required property var phrases
    required property string title
    required property string question
    required property string answer
    required property var samples
    required property string emptySymbol
    required property string emptyTitle
    required property string emptyText
    property string loadingText

    readonly property int margin: width < 560 ? Theme.spaceMedium : Theme.spaceLarge
    readonly property real rowWidth: Math.min(width - 2 * margin, 760)
    /// The header grows upwards while it is laid out, and the view is to stay at its top.
    property bool isAtTop: true
    readonly property real rowX: (width - rowWidth) / 2

    model: phrases.rows
    currentIndex: -1
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    reuseItems: true
    cacheBuffer: 400
    activeFocusOnTab: count > 0
    keyNavigationEnabled: true
    highlightMoveDuration: 0
    Accessible.role: Accessible.List
    Accessible.name: title

    ScrollBar.vertical: ScrollBar {}

    onContentYChanged: isAtTop = contentY <= originY + 1
    onOriginYChanged: if (isAtTop) contentY = originY
    onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0
    Keys.onReturnPressed: if (currentItem) phrases.edit(currentItem.entryId)
    Keys.onEnterPressed: if (currentItem) phrases.edit(currentItem.entryId)
    Keys.onDeletePressed: if (currentItem) phrases.remove(currentItem.entryId)

    header: Item {
        width: list.width
        height: intro.height + 2 * list.margin

        ColumnLayout {
            id: intro

            x: list.rowX
            y: list.margin
            width: list.rowWidth
            spacing: Theme.spaceMedium

            RowLayout {
                Layout.fillWidth: true

                PageTitle {
                    Layout.fillWidth: true
                    text: list.title
                }
                PillButton {
                    text: qsTr("Add New")
                    symbol: "plus"
                    isProminent: true
                    onClicked: list.phrases.sheet.open()
                }
            }
            PhraseExplainer {
                Layout.fillWidth: true
                question: list.question
                answer: list.answer
                samples: list.samples
            }
            RowLayout {
                Layout.fillWidth: true
                visible: list.phrases.isLoading
                spacing: Theme.spaceSmall

                Spinner {
                    running: list.phrases.isLoading
                }
                Text {
                    Layout.fillWidth: true
                    text: list.loadingText
                    color: Theme.secondaryText
                    font.pixelSize: Theme.fontSmall
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
            EmptyPlace {
                Layout.fillWidth: true
                visible: list.count === 0 && !list.phrases.isLoading
                symbol: list.emptySymbol
                title: list.emptyTitle
                text: list.emptyText
            }
        }
    }
    footer: Item {
        height: list.margin
    }
    delegate: PhraseRow {
        x: list.rowX
        width: list.rowWidth
        isFirst: index === 0
        isLast: index === list.count - 1
        isCurrent: ListView.isCurrentItem
        hasFocus: ListView.isCurrentItem && list.activeFocus
        onEditing: list.phrases.edit(entryId)
        onDeleting: list.phrases.remove(entryId)
    }
}
