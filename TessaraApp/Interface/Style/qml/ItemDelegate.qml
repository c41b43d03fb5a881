import QtQuick
import QtQuick.Templates as T
import Tessara.Style

/// One line of a list or of an open picker.
T.ItemDelegate {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: 30
    leftPadding: 10
    rightPadding: 14
    font.pixelSize: Theme.bodySize
    Accessible.name: text
    Accessible.onPressAction: control.clicked()

    contentItem: Row {
        spacing: 8
        Icon {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            symbol: control.checked ? "checkmark" : ""
            color: Theme.colors.accent
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: control.text
            font: control.font
            color: Theme.colors.text
        }
    }
    background: Rectangle {
        radius: 5
        color: control.down ? Theme.colors.fieldPressed
                            : control.highlighted ? Theme.colors.accentWash : "transparent"
    }
}
