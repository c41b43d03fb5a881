import QtQuick
import QtQuick.Templates as T

/// The row of tabs at the top of a window, as wide as its tabs.
T.TabBar {
    id: control

    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    spacing: 4

    contentItem: ListView {
        model: control.contentModel
        currentIndex: control.currentIndex
        spacing: control.spacing
        orientation: ListView.Horizontal
        interactive: false
    }
}
