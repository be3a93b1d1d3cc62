// A scroll bar for the pointer. Assistive tools pass over it: what they go to is scrolled into sight.
import QtQuick
import QtQuick.Controls.Basic

ScrollBar {
    Accessible.ignored: true
}
