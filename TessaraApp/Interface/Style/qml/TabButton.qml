import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// One tab: a symbol above its title.
T.TabButton {
    id: control

    property string symbol

    width: implicitWidth
    implicitWidth: 84
    implicitHeight: 54
    opacity: Window.active ? 1 : 0.6
    Accessible.name: text
    Accessible.selectable: true
    Accessible.selected: checked
    Accessible.onPressAction: control.checked = true

    contentItem: Item {
        Icon {
            anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 8 }
            width: 20
            height: 20
            symbol: control.symbol
            color: control.checked ? Theme.colors.accent : Theme.colors.secondaryText
        }
        Text {
            anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 6 }
            text: control.text
            font.pixelSize: Theme.smallSize
            color: control.checked ? Theme.colors.accent : Theme.colors.secondaryText
        }
    }
    background: Rectangle {
        radius: 8
        color: control.checked ? Theme.colors.accentWash
                               : control.hovered ? Theme.colors.fieldHovered : "transparent"
        FocusRing { shown: control.visualFocus }
    }
}
