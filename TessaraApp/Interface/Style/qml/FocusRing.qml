import QtQuick
import Tessara.Style

/// The ring around a control, its parent, that has the keyboard's focus.
Rectangle {
    required property bool shown

    anchors.fill: parent
    anchors.margins: -3
    color: "transparent"
    border { width: 2; color: Theme.colors.accent }
    radius: 8
    visible: shown
}
