// A list of "say this, write that" rows, of whatever length, with what it is for above it.
//
// However many rows there are, one of them is a stop of the Tab key: the arrow keys walk from it to the
// others, Enter changes a row, Delete deletes it, and Tab goes on to its buttons.
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
    keyNavigationEnabled: false
    highlightMoveDuration: 0
    Accessible.role: Accessible.List
    Accessible.name: title

    ScrollBar.vertical: PointerScrollBar {}

    onContentYChanged: isAtTop = contentY <= originY + 1
    onOriginYChanged: if (isAtTop) contentY = originY

    function walkTo(index) {
        if (index < 0 || index >= count)
            return
        positionViewAtIndex(index, ListView.Contain)
        // The keyboard goes first: what it leaves then stops being a stop of the Tab key.
        itemAtIndex(index).forceActiveFocus(Qt.TabFocusReason)
        currentIndex = index
    }

    function remove(row) {
        if (row.activeFocus)
            walkTo(row.index + 1 < count ? row.index + 1 : row.index - 1)
        phrases.remove(row.entryId)
    }

    header: Item {
        width: list.width
        height: list.margin + intro.height + Theme.spaceMedium

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
                    horizontalAlignment: Text.AlignLeft
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
        isTabStop: index === Math.max(0, list.currentIndex)
        onEditing: list.phrases.edit(entryId)
        onDeleting: list.remove(this)
        onWalking: to => list.walkTo(to)
    }
}
