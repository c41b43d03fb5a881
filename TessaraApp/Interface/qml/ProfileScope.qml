import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// The row that picks the profile which the page beneath it edits.
RowLayout {
    id: row

    required property ProfileScopeModel scope

    Layout.fillWidth: true
    spacing: 10

    Label {
        text: row.scope.title
        Accessible.ignored: true
    }
    ComboBox {
        text: row.scope.title
        model: row.scope.names
        chosen: row.scope.currentIndex
        onActivated: index => row.scope.choose(index)
    }
    Icon {
        implicitWidth: 16
        implicitHeight: 16
        symbol: "checkmark.circle.fill"
        color: Theme.colors.good
        visible: row.scope.isInUse
    }
    Label {
        Layout.fillWidth: true
        text: row.scope.useText
        color: Theme.colors.secondaryText
        elide: Text.ElideRight
    }
}
