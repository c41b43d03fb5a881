import QtQuick
import QtQuick.Layouts
import Tessara.Style

/// A titled card of settings, one beneath the other, with hairlines between them.
ColumnLayout {
    id: section

    property string title
    default property alias rows: column.data

    Layout.fillWidth: true
    spacing: 8

    Label {
        text: section.title
        visible: text !== ""
        font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
        Accessible.role: Accessible.Heading
    }
    Rectangle {
        Layout.fillWidth: true
        implicitHeight: card.implicitHeight
        radius: 10
        color: Theme.colors.card
        border { width: 1; color: Theme.colors.separator }

        ColumnLayout {
            id: card
            anchors.fill: parent
            ColumnLayout {
                id: column
                Layout.leftMargin: 16
                Layout.rightMargin: 16
                Layout.topMargin: 12
                Layout.bottomMargin: 14
                spacing: 24
            }
        }
    }
}
