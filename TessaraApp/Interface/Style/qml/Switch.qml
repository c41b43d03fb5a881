import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A switch without words of its own: `text` is its accessible name, shown by whoever uses it. It
/// shows `isOn`; whoever flips it only asks for that, with `turned`, and may not get it.
T.Switch {
    id: control

    property bool isOn: false
    signal turned(bool isOn)

    function flip(): void {
        toggle();
        toggled();
    }

    checked: isOn
    onToggled: {
        turned(checked);
        checked = Qt.binding(() => control.isOn);
    }
    implicitWidth: 40
    implicitHeight: 24
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: control.flip()
    Accessible.onPressAction: control.flip()
    Keys.onReturnPressed: control.flip()
    Keys.onEnterPressed: control.flip()

    indicator: Rectangle {
        width: 40
        height: 24
        radius: 12
        color: control.checked ? Theme.colors.accent : Theme.colors.track
        Rectangle {
            x: control.checked ? 18 : 2
            y: 2
            width: 20
            height: 20
            radius: 10
            color: Theme.colors.knob
            border { width: 1; color: Qt.rgba(0, 0, 0, 0.12) }
            Behavior on x { NumberAnimation { duration: Theme.motionMillis } }
        }
    }
    background: Item {
        FocusRing { shown: control.visualFocus; radius: 15 }
    }
}
