import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// What a control without words says when the pointer rests on it.
T.ToolTip {
    id: control

    x: parent.width - implicitWidth
    y: -implicitHeight - 4
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    delay: 600
    horizontalPadding: 8
    verticalPadding: 5
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent

    contentItem: Text {
        text: control.text
        font.pixelSize: Theme.smallSize
        color: Theme.colors.text
    }
    background: Rectangle {
        radius: 5
        color: Theme.colors.field
        border { width: 1; color: Theme.colors.border }
    }
}
