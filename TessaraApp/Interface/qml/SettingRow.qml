import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// What the rows of all settings have in common: the title, the control beside it, the way back to
/// the default at the end, whatever stands beneath, and the help.
ColumnLayout {
    id: row

    required property Setting setting
    property alias control: controls.data
    default property alias beneath: underControls.data

    Layout.fillWidth: true
    enabled: setting.isEnabled
    spacing: 4

    Rectangle {
        // On the card's own edge above the first row, halfway between two others.
        Layout.fillWidth: true
        Layout.topMargin: -14
        Layout.bottomMargin: 9
        implicitHeight: 1
        color: Theme.colors.separator
    }
    RowLayout {
        spacing: 10
        Layout.fillWidth: true
        Label {
            Layout.fillWidth: true
            text: row.setting.title
            Accessible.ignored: true
            elide: Text.ElideRight
            opacity: row.enabled ? 1 : 0.5
        }
        RowLayout {
            id: controls
            spacing: 10
        }
        ResetButton {
            text: row.setting.resetLabel
            onClicked: row.setting.reset()
        }
    }
    ColumnLayout {
        id: underControls
        Layout.fillWidth: true
        visible: children.length > 0
    }
    Explain {
        text: row.setting.help
        opacity: row.enabled ? 1 : 0.6
        Layout.rightMargin: 36
    }
}
