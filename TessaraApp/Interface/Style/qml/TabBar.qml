import QtQuick
import QtQuick.Templates as T

/// The row of tabs at the top of a window, as wide as its tabs. The arrow keys go from tab to tab.
T.TabBar {
    id: control

    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    spacing: 4

    Keys.onLeftPressed: {
        control.decrementCurrentIndex();
        control.currentItem.forceActiveFocus(Qt.TabFocusReason);
    }
    Keys.onRightPressed: {
        control.incrementCurrentIndex();
        control.currentItem.forceActiveFocus(Qt.TabFocusReason);
    }

    contentItem: ListView {
        model: control.contentModel
        currentIndex: control.currentIndex
        spacing: control.spacing
        orientation: ListView.Horizontal
        interactive: false
    }
}
