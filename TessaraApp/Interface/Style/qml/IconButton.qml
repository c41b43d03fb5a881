import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A small button that shows a symbol. Its text is its accessible name and its tip.
T.Button {
    id: control

    property string symbol
    property color symbolColor: Theme.colors.secondaryText

    implicitWidth: 26
    implicitHeight: 26
    padding: 5
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: control.clicked()
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    contentItem: Icon {
        symbol: control.symbol
        color: control.hovered ? Theme.colors.accent : control.symbolColor
    }
    background: Rectangle {
        radius: 6
        color: control.down ? Theme.colors.fieldPressed
                            : control.hovered ? Theme.colors.accentWash : "transparent"
        FocusRing { shown: control.visualFocus }
    }
    ToolTip {
        text: control.text
        visible: control.hovered
    }
}
