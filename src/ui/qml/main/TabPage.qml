// A tab's content: scrolls as a whole, keeps a readable width, and follows the keyboard's focus.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import "../common"

Flickable {
    id: page

    default property alias sections: column.data
    readonly property int margin: width < 560 ? Theme.spaceMedium : Theme.spaceLarge

    contentWidth: width
    contentHeight: column.implicitHeight + 2 * margin
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    Accessible.role: Accessible.Pane

    ScrollBar.vertical: PointerScrollBar {}

    ColumnLayout {
        id: column

        x: (page.width - width) / 2
        y: page.margin
        width: Math.min(page.width - 2 * page.margin, 760)
        spacing: Theme.spaceMedium
    }

    function showFocused(item) {
        if (!item || !isInside(item))
            return
        const top = item.mapToItem(page.contentItem, 0, 0).y
        if (top < contentY)
            contentY = Math.max(0, top - margin)
        else if (top + item.height > contentY + height)
            contentY = Math.min(contentHeight - height, top + item.height + margin - height)
    }

    function isInside(item) {
        for (let at = item; at; at = at.parent)
            if (at === page.contentItem)
                return true
        return false
    }

    Connections {
        target: page.Window.window
        function onActiveFocusItemChanged() {
            page.showFocused(page.Window.window.activeFocusItem)
        }
    }
}
