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

    implicitWidth: 180
    implicitHeight: 260
    opacity: desk.isPluggedIn ? 1 : 0.4
    activeFocusOnTab: true
    Accessible.role: Accessible.Client
    Accessible.name: desk.mouseTitle
    Accessible.description: desk.mouseHelp
    Accessible.focusable: true
    Accessible.onScrollUpAction: desk.spin(1)
    Accessible.onScrollDownAction: desk.spin(-1)
    Accessible.onPressAction: desk.click(0)
    Keys.onPressed: event => event.accepted = desk.pressKey(event.key, event.isAutoRepeat)
    Keys.onReleased: event => event.accepted = desk.releaseKey(event.key, event.isAutoRepeat)
    onActiveFocusChanged: desk.releaseAll()

    /// The outline of the mouse.
    component Body: Rectangle {
        width: mouse.width
        height: mouse.height
        radius: 86
        color: Theme.colors.card
        border { width: 1; color: Theme.colors.border }
    }

    /// A button of the mouse, down for as long as the pointer holds it.
    component MouseButton: T.AbstractButton {
        id: button
        property int number
        readonly property color face: down ? Theme.colors.accent
                                           : hovered ? Theme.colors.fieldHovered : Theme.colors.field
        Accessible.name: mouse.desk.buttonTitle(number)
        Accessible.onPressAction: mouse.desk.click(number)
        focusPolicy: Qt.NoFocus
        onPressed: mouse.desk.press(number)
        onReleased: mouse.desk.release(number)
        onCanceled: mouse.desk.release(number)
        contentItem: Label {
            text: button.number
            color: button.down ? Theme.colors.onAccent : Theme.colors.secondaryText
            font.pixelSize: Theme.smallSize
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            Accessible.ignored: true
        }
    }
    /// One of the two in front: what is on its side of the body's outline.
    component FrontButton: MouseButton {
        id: front
        width: 90
        height: 116
        background: Item {
            clip: true
            Body {
                x: -front.x
                color: front.face
            }
        }
    }
    component SmallButton: MouseButton {
        id: small
        background: Rectangle {
            radius: 9
            color: small.face
            border { width: 1; color: Theme.colors.border }
        }
    }
    component Seam: Rectangle { color: Theme.colors.border }

    Body {}
    MouseArea {
        property point last
        anchors.fill: parent
        cursorShape: pressed ? Qt.ClosedHandCursor : Qt.OpenHandCursor
        onPressed: event => {
            mouse.forceActiveFocus();
            last = Qt.point(event.x, event.y);
        }
        onPositionChanged: event => {
            mouse.desk.drag(last, Qt.point(event.x, event.y));
            last = Qt.point(event.x, event.y);
        }
        onWheel: event => mouse.desk.turn(event.angleDelta)
    }
    FrontButton { x: 0; number: 0 }
    FrontButton { x: 90; number: 1 }
    Seam { y: 116; width: parent.width; height: 1 }
    Seam { x: 90; width: 1; height: 116 }
    Rectangle {
        x: 77
        y: 28
        width: 27
        height: 68
        radius: 13
        color: Theme.colors.window
        border { width: 1; color: Theme.colors.border }
    }
    SmallButton { x: 81; y: 38; width: 19; height: 48; number: 2 }
    SmallButton { x: 8; y: 126; width: 20; height: 36; number: 4 }
    SmallButton { x: 8; y: 166; width: 20; height: 36; number: 3 }
    SmallButton { x: 34; y: 126; width: 20; height: 28; number: 5 }
    Body {
        color: "transparent"
        border { width: 2; color: Theme.colors.accent }
        visible: mouse.activeFocus
    }
}
