pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// A notice above the pages, with its actions.
Rectangle {
    id: banner

    required property Notice notice

    readonly property color kindColor: [
        Theme.colors.accent, Theme.colors.waiting, Theme.colors.bad
    ][notice.kind]

    Layout.fillWidth: true
    implicitHeight: room.implicitHeight
    radius: 10
    color: Theme.colors.card
    border { width: 1; color: kindColor }
    Accessible.role: Accessible.AlertMessage
    Accessible.name: notice.title
    Accessible.description: notice.message

    Rectangle {
        anchors.fill: parent
        radius: parent.radius
        color: banner.kindColor
        opacity: 0.1
    }
    Icon {
        x: 14
        y: 12
        width: 20
        height: 20
        symbol: banner.notice.symbol
        color: banner.kindColor
    }
    ColumnLayout {
        id: room
        anchors.fill: parent
        ColumnLayout {
            Layout.leftMargin: 46
            Layout.rightMargin: 14
            Layout.topMargin: 14
            Layout.bottomMargin: 14
            spacing: 6
            Label {
                Layout.fillWidth: true
                text: banner.notice.title
                font.weight: Font.DemiBold
                wrapMode: Text.WordWrap
                Accessible.ignored: true
            }
            Label {
                Layout.fillWidth: true
                text: banner.notice.message
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
            Flow {
                Layout.fillWidth: true
                Layout.topMargin: 4
                spacing: 8
                Repeater {
                    model: banner.notice.actions
                    Button {
                        required property string modelData
                        required property int index
                        text: modelData
                        onClicked: banner.notice.perform(index)
                    }
                }
            }
        }
    }
}
