pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tessara.Style
import Tessara.ViewModels

/// A notice above the pages, with its actions.
T.Frame {
    id: banner

    required property Notice notice

    readonly property color kindColor: [
        Theme.colors.accent, Theme.colors.waiting, Theme.colors.bad
    ][notice.kind]

    Layout.fillWidth: true
    padding: 14
    leftPadding: 46
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    Accessible.role: Accessible.AlertMessage
    Accessible.name: notice.title
    Accessible.description: notice.message

    background: Rectangle {
        radius: 10
        color: Theme.colors.card
        border { width: 1; color: banner.kindColor }
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
    }
    contentItem: ColumnLayout {
        spacing: 6
        Label {
            Layout.fillWidth: true
            text: banner.notice.title
            font.weight: Font.DemiBold
            wrapMode: Text.WordWrap
        }
        Label {
            Layout.fillWidth: true
            text: banner.notice.message
            wrapMode: Text.Wrap
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
