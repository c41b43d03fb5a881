import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A thin bar that is there when there is something to scroll.
T.ScrollBar {
    id: control

    implicitWidth: 10
    implicitHeight: 10
    padding: 2
    Accessible.ignored: true
    minimumSize: 0.1
    visible: size < 1
    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: Theme.colors.off
        opacity: control.pressed ? 0.9 : control.hovered ? 0.7 : 0.4
    }
}
