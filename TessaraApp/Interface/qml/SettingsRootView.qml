pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tessara.Style
import Tessara.ViewModels

/// The settings window: the tabs, and the page of the selected one.
T.ApplicationWindow {
    id: window

    required property SettingsViewModel settings

    width: 860
    height: 720
    minimumWidth: 720
    minimumHeight: 520
    title: settings.windowTitle
    color: Theme.colors.window
    Shortcut { sequences: ["Ctrl+W", "Esc"]; onActivated: window.close() }
    Shortcut { sequences: ["Ctrl+Q"]; onActivated: window.settings.quit() }

    component PageToCome: SettingsPage {
        settings: window.settings
        Icon {
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 64
            implicitWidth: 48
            implicitHeight: 48
            symbol: window.settings.pageSymbol
            color: Theme.colors.border
        }
        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: window.settings.comingText
            color: Theme.colors.secondaryText
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: tabs.implicitHeight + 8
            color: Theme.colors.card
            SettingsTabBar {
                id: tabs
                anchors.centerIn: parent
                settings: window.settings
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.colors.separator
        }
        StackLayout {
            currentIndex: window.settings.selectedTab
            SettingsPage {
                settings: window.settings
                ScrollTab { page: window.settings.scrollPage }
            }
            PageToCome {}
            PageToCome {}
            PageToCome {}
            PageToCome {}
            PageToCome {}
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.colors.separator
            visible: footer.visible
        }
        RowLayout {
            id: footer
            visible: !window.settings.hasTray
            Layout.fillWidth: true
            Layout.margins: 12
            Layout.leftMargin: 24
            Layout.rightMargin: 24
            spacing: 16
            Explain { text: window.settings.noTrayText }
            Button {
                text: window.settings.quitText
                onClicked: window.settings.quit()
            }
        }
    }
}
