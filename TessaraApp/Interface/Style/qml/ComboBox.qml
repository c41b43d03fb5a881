pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// A picker of one of a few texts. `text` is its accessible name. It shows `chosen`, whatever becomes
/// of its texts; whoever picks another one only asks for it, with `activated`.
T.ComboBox {
    id: control

    property string text
    property int chosen: -1

    function showChosen(): void {
        currentIndex = Qt.binding(() => control.chosen);
    }

    currentIndex: chosen
    onModelChanged: showChosen()
    onActivated: showChosen()
    implicitWidth: widest.width + 52
    implicitHeight: 30
    leftPadding: 12
    rightPadding: 32
    font.pixelSize: Theme.bodySize
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.description: displayText
    Accessible.onPressAction: {
        control.forceActiveFocus();
        popup.open();
    }

    /// As wide as the widest of the texts, so that it keeps its width when another is chosen.
    Item {
        id: widest
        visible: false
        width: texts.implicitWidth
        Column {
            id: texts
            Repeater {
                model: control.model
                Text {
                    required property string modelData
                    text: modelData
                    font: control.font
                }
            }
        }
    }

    contentItem: Text {
        text: control.displayText
        font: control.font
        color: Theme.colors.text
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    indicator: Icon {
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        width: 14
        height: 14
        symbol: "chevron.down"
        color: Theme.colors.secondaryText
    }
    background: Rectangle {
        radius: 6
        color: control.down ? Theme.colors.fieldPressed
                            : control.hovered ? Theme.colors.fieldHovered : Theme.colors.field
        border { width: 1; color: Theme.colors.border }
        FocusRing { shown: control.visualFocus }
    }
    delegate: ItemDelegate {
        required property string modelData
        required property int index
        width: ListView.view.width
        text: modelData
        checked: control.currentIndex === index
        highlighted: control.highlightedIndex === index
    }
    popup: T.Popup {
        y: control.height + 4
        width: control.width
        implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
        padding: 4
        margins: 8
        contentItem: ListView {
            implicitHeight: contentHeight
            clip: true
            model: control.popup.visible ? control.delegateModel : null
            currentIndex: control.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: ScrollBar {}
        }
        background: Rectangle {
            radius: 8
            color: Theme.colors.card
            border { width: 1; color: Theme.colors.border }
        }
    }
}
