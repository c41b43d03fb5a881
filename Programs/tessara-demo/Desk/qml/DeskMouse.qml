pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Tessara.Style
import Tessara.Desk

/// A mouse from above. Its buttons are pressed and its wheel is turned where they are; dragging the
/// body moves it. The keys do the same while it has the focus.
Item {
    id: mouse

    required property DeskModel desk

    implicitWidth: 190
    implicitHeight: 280
    opacity: desk.isPluggedIn ? 1 : 0.4
    activeFocusOnTab: true
    Accessible.role: Accessible.Client
    Accessible.name: desk.mouseTitle
    Accessible.description: desk.mouseHelp
    Accessible.focusable: true
    Accessible.onScrollUpAction: desk.spin(1)
    Accessible.onScrollDownAction: desk.spin(-1)
    Accessible.onPressAction: desk.click(0)
    Keys.onPressed: (event) => event.accepted = desk.pressKey(event.key, event.isAutoRepeat)
    Keys.onReleased: (event) => event.accepted = desk.releaseKey(event.key, event.isAutoRepeat)
    onActiveFocusChanged: desk.releaseAll()

    /// A button of the mouse, down for as long as the pointer holds it.
    component MouseButton: T.AbstractButton {
        id: button
        property int number
        property real corner: 8
        property real topLeft: corner
        Accessible.name: mouse.desk.buttonTitle(number)
        Accessible.onPressAction: mouse.desk.click(number)
        focusPolicy: Qt.NoFocus
        onPressed: mouse.desk.press(number)
        onReleased: mouse.desk.release(number)
        onCanceled: mouse.desk.release(number)
        background: Rectangle {
            radius: button.corner
            color: button.down ? Theme.colors.accent
                               : button.hovered ? Theme.colors.fieldHovered : Theme.colors.field
            border { width: 1; color: Theme.colors.border }
        }
        contentItem: Label {
            text: button.number
            color: button.down ? Theme.colors.onAccent : Theme.colors.secondaryText
            font.pixelSize: Theme.smallSize
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: 90
        color: Theme.colors.card
        border { width: mouse.activeFocus ? 2 : 1; color: mouse.activeFocus ? Theme.colors.accent : Theme.colors.border }
    }
    MouseArea {
        property point last
        anchors.fill: parent
        cursorShape: pressed ? Qt.ClosedHandCursor : Qt.OpenHandCursor
        onPressed: (event) => { mouse.forceActiveFocus(); last = Qt.point(event.x, event.y) }
        onPositionChanged: (event) => {
            mouse.desk.drag(last, Qt.point(event.x, event.y))
            last = Qt.point(event.x, event.y)
        }
        onWheel: (event) => mouse.desk.turn(event.angleDelta)
    }
    MouseButton { x: 26; y: 24; width: 58; height: 96; corner: 24; number: 0 }
    MouseButton { x: 106; y: 24; width: 58; height: 96; corner: 24; number: 1 }
    MouseButton { x: 86; y: 44; width: 18; height: 56; corner: 9; number: 2 }
    MouseButton { x: 6; y: 140; width: 22; height: 40; number: 4 }
    MouseButton { x: 6; y: 184; width: 22; height: 40; number: 3 }
    MouseButton { x: 32; y: 128; width: 22; height: 34; number: 5 }
}
