import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A page that can be taller than its window. What gets the keyboard's focus scrolls into view.
Flickable {
    id: view

    default property alias content: page.data

    contentWidth: width
    contentHeight: page.childrenRect.height
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    T.ScrollBar.vertical: ScrollBar {}

    Item {
        id: page
        width: view.width
        height: view.contentHeight
    }
    FocusFollower { flickable: view }
}
