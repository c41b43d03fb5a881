import Tessara.Style

/// Brings one setting back to its default. It is there also when nothing has been changed.
IconButton {
    property bool showsSettingResets: true

    visible: showsSettingResets
    symbol: "clock.arrow.circlepath"
}
