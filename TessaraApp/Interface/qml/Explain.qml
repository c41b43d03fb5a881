import QtQuick
import QtQuick.Layouts
import Tessara.Style

/// The help under a control: small, secondary, as many lines as it takes.
Label {
    Layout.fillWidth: true
    color: Theme.colors.secondaryText
    font.pixelSize: Theme.smallSize
    lineHeight: 1.15
    wrapMode: Text.WordWrap
    visible: text !== ""
}
