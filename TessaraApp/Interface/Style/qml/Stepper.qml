import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// Two small buttons that go one step down or up; the arrow keys do, too. `text` is its accessible
/// name and `valueText` what a screen reader says of the value. A screen reader sets `value` itself.
Item {
    id: control

    property string text
    property string valueText
    property real value
    property real from
    property real to
    property bool canStepUp: true
    property bool canStepDown: true
    signal stepUp
    signal stepDown

    implicitWidth: 52
    implicitHeight: 26
    activeFocusOnTab: true
    opacity: enabled ? 1 : 0.45
    Accessible.role: Accessible.SpinBox
    Accessible.name: text
    Accessible.description: valueText
    Accessible.focusable: true
    Accessible.onIncreaseAction: control.stepUp()
    Accessible.onDecreaseAction: control.stepDown()
    Keys.onUpPressed: control.stepUp()
    Keys.onDownPressed: control.stepDown()
    Keys.onRightPressed: control.stepUp()
    Keys.onLeftPressed: control.stepDown()

    component Half: T.AbstractButton {
        id: half
        property string symbol
        width: 26
        height: 26
        padding: 7
        autoRepeat: true
        focusPolicy: Qt.NoFocus
        Accessible.ignored: true
        contentItem: Icon {
            symbol: half.symbol
            color: half.enabled ? Theme.colors.text : Theme.colors.border
        }
        background: Rectangle {
            radius: 5
            color: half.down ? Theme.colors.fieldPressed
                             : half.hovered ? Theme.colors.accentWash : "transparent"
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: 6
        color: Theme.colors.field
        border { width: 1; color: Theme.colors.border }
        FocusRing { shown: control.activeFocus }
    }
    Rectangle {
        anchors.centerIn: parent
        width: 1
        height: 14
        color: Theme.colors.border
    }
    Row {
        Half { symbol: "minus"; enabled: control.canStepDown; onClicked: control.stepDown() }
        Half { symbol: "plus"; enabled: control.canStepUp; onClicked: control.stepUp() }
    }
}
