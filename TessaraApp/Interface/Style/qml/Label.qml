import QtQuick
import Tessara.Style

/// A text in the body's size and colour.
Text {
    color: Theme.colors.text
    font.pixelSize: Theme.bodySize
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
