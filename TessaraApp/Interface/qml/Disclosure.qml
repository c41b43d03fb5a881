import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tessara.Style

/// A part of a page that is folded until it is asked for.
ColumnLayout {
    id: disclosure

    property string title
    property bool isOpen: false
    default property alias rows: content.rows

    Layout.fillWidth: true
    spacing: 8

    T.AbstractButton {
        id: head
        Layout.fillWidth: true
        implicitHeight: 32
        text: disclosure.title
        checkable: true
        checked: disclosure.isOpen
        onCheckedChanged: disclosure.isOpen = checked
        opacity: enabled ? 1 : 0.45
        Accessible.name: text
        Accessible.checkable: true
        Accessible.checked: checked
        Accessible.onPressAction: head.toggle()
        Accessible.onToggleAction: head.toggle()
        Keys.onReturnPressed: head.toggle()
        Keys.onEnterPressed: head.toggle()

        contentItem: Row {
            spacing: 8
            Icon {
                anchors.verticalCenter: parent.verticalCenter
                width: 14
                height: 14
                symbol: disclosure.isOpen ? "chevron.down" : "chevron.right"
                color: Theme.colors.secondaryText
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: head.text
                color: Theme.colors.text
                font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
            }
        }
        background: Rectangle {
            radius: 6
            color: head.hovered ? Theme.colors.fieldHovered : "transparent"
            FocusRing { shown: head.visualFocus }
        }
    }
    Section {
        id: content
        visible: disclosure.isOpen
    }
}
