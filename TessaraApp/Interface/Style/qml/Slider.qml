import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A horizontal slider. A screen reader sets `value` itself, so whoever listens listens to that.
T.Slider {
    id: control

    /// The user wants one of the ends.
    signal jumped(real target)

    implicitWidth: 200
    implicitHeight: 24
    snapMode: T.Slider.SnapAlways
    opacity: enabled ? 1 : 0.45
    Accessible.onIncreaseAction: control.increase()
    Accessible.onDecreaseAction: control.decrease()
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End;
        if (event.accepted)
            control.jumped(event.key === Qt.Key_Home ? control.from : control.to);
    }

    background: Rectangle {
        x: control.leftPadding
        anchors.verticalCenter: parent.verticalCenter
        width: control.availableWidth
        height: 4
        radius: 2
        color: Theme.colors.track
        Rectangle {
            width: control.handle.x
            height: parent.height
            radius: 2
            color: Theme.colors.accent
        }
    }
    handle: Rectangle {
        x: control.visualPosition * (control.availableWidth - width)
        anchors.verticalCenter: parent.verticalCenter
        width: 20
        height: 20
        radius: 10
        color: Theme.colors.knob
        border { width: 1; color: control.pressed ? Theme.colors.accent : Theme.colors.border }
        FocusRing { shown: control.visualFocus; radius: 13 }
    }
}
