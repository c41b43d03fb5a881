pragma ComponentBehavior: Bound
import QtQuick
import Tessara.Style
import Tessara.ViewModels

/// The tabs of the settings window.
TabBar {
    id: bar

    required property SettingsViewModel settings

    Accessible.name: settings.tabBarLabel
    currentIndex: settings.selectedTab
    onCurrentIndexChanged: settings.selectedTab = currentIndex

    Repeater {
        model: bar.settings.tabs
        TabButton {
            required property settingsTab modelData
            text: modelData.title
            symbol: modelData.symbol
        }
    }
}
