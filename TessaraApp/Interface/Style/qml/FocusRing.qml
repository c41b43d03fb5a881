import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// The ring around a control that has the keyboard's focus.
Rectangle {
    required property T.Control control

    anchors.fill: parent
    anchors.margins: -3
    color: "transparent"
    border { width: 2; color: Theme.colors.accent }
    radius: 8
    visible: control.visualFocus
}
