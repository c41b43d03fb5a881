import QtQuick
import QtQuick.Layouts
import Tessara.Style

/// A state in one of four levels: a small filled circle and its words.
RowLayout {
    id: dot

    enum Level { Good, Waiting, Bad, Off }
    required property int level
    required property string text

    readonly property list<color> levelColors: [
        Theme.colors.good, Theme.colors.waiting, Theme.colors.bad, Theme.colors.off
    ]

    spacing: 8

    Rectangle {
        // On the first line of the words.
        Layout.alignment: Qt.AlignTop
        Layout.topMargin: 4
        implicitWidth: 10
        implicitHeight: 10
        radius: 5
        color: dot.levelColors[dot.level]
    }
    Label {
        Layout.fillWidth: true
        text: dot.text
        wrapMode: Text.WordWrap
    }
}
