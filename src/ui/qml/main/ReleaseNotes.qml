// What is new in an update: headings, bullets and paragraphs. Of long notes, only the pages around what is in
// sight are made, and those that the Tab key goes to next.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

TabPage {
    id: notes

    /// A model of `rows`, their `rowCount`, and whether it `hasLinks`.
    required property var pages

    readonly property int tallest: 420
    readonly property int leastRowHeight: Theme.fontBody

    implicitWidth: 340
    implicitHeight: Math.min(contentHeight, tallest)
    focus: true
    activeFocusOnTab: true
    LayoutMirroring.enabled: Theme.isRightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Document
    Accessible.name: qsTr("What's new")
    Accessible.focusable: true
    Keys.onDownPressed: ScrollBar.vertical.increase()
    Keys.onUpPressed: ScrollBar.vertical.decrease()
    onContentYChanged: Qt.callLater(makeSeen)
    onContentHeightChanged: Qt.callLater(makeSeen)
    onActiveFocusChanged: {
        if (!activeFocus)
            return
        makeLinks(-1, 1)
        makeLinks(made.count, -1)
    }

    /// The pages in sight, and those that are soon.
    function makeSeen() {
        for (let at = 0; at < made.count; ++at) {
            const page = made.itemAt(at)
            // A page that has no place yet lies at the top.
            const isPlaced = at === 0 || page.y > 0
            if (isPlaced && page.y < contentY + 2 * tallest && page.y + page.height > contentY - tallest)
                page.active = true
        }
    }

    /// The next page with links from a page on, forwards by 1 or backwards by -1.
    function makeLinks(from, step) {
        for (let at = from + step; at >= 0 && at < made.count; at += step) {
            const page = made.itemAt(at)
            if (!page.model.hasLinks)
                continue
            page.active = true
            return
        }
    }

    Column {
        id: column

        Layout.fillWidth: true
        spacing: 6

        Repeater {
            id: made

            model: notes.pages

            Loader {
                id: page

                required property var model
                required property int index
                property real heightBefore: 0

                active: index === 0
                width: column.width
                height: item ? item.implicitHeight
                             : model.rowCount * (notes.leastRowHeight + column.spacing) - column.spacing
                // What is in sight stays there while a page above it comes to its height.
                onHeightChanged: {
                    if (y < notes.contentY)
                        notes.contentY += height - heightBefore
                    heightBefore = height
                }
                sourceComponent: Column {
                    spacing: column.spacing

                    Repeater {
                        model: page.model.rows

                        ReleaseNotesRow {
                            required property var modelData

                            width: column.width
                            kind: modelData.kind
                            markup: modelData.markup
                            links: modelData.links
                            onLinkReached: {
                                notes.makeLinks(page.index, 1)
                                notes.makeLinks(page.index, -1)
                            }
                        }
                    }
                }
            }
        }
    }
}
