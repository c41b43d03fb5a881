import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A push button; `highlighted` marks the one that Return presses.
T.Button {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: 30
    leftPadding: 14
    rightPadding: 14
    font.pixelSize: Theme.bodySize
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: control.clicked()
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    contentItem: Text {
        text: control.text
        font: control.font
        color: control.highlighted ? Theme.colors.onAccent : Theme.colors.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 6
        color: control.highlighted
               ? (control.down ? Theme.colors.accentPressed : Theme.colors.accent)
               : (control.down ? Theme.colors.fieldPressed
                               : control.hovered ? Theme.colors.fieldHovered : Theme.colors.field)
        border { width: control.highlighted ? 0 : 1; color: Theme.colors.border }
        FocusRing { shown: control.visualFocus }
    }
}
