import QtQuick
import QtQuick.Layouts
import Tessara.Style

/// A fact: its name, its value to read and to copy, and what it means.
ColumnLayout {
    id: row

    required property string label
    required property string value
    property string help
    property alias valueFont: text.font

    Layout.fillWidth: true
    spacing: 4

    RowLayout {
        spacing: 16
        Label {
            Layout.alignment: Qt.AlignTop
            text: row.label
            Accessible.ignored: true
        }
        TextEdit {
            id: text
            Layout.fillWidth: true
            text: row.value
            readOnly: true
            selectByMouse: true
            activeFocusOnTab: true
            onActiveFocusChanged: activeFocus ? selectAll() : deselect()
            horizontalAlignment: TextEdit.AlignRight
            wrapMode: TextEdit.Wrap
            color: Theme.colors.secondaryText
            selectionColor: Theme.colors.accent
            selectedTextColor: Theme.colors.onAccent
            font.pixelSize: Theme.bodySize
            Accessible.role: Accessible.StaticText
            Accessible.name: row.label
            Accessible.description: row.value
        }
    }
    Explain { text: row.help }
}
