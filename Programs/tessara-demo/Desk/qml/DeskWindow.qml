pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tessara.Interface
import Tessara.Style
import Tessara.Desk

/// The Desk: a mouse to be worked by hand, the applications that it scrolls, and the switches of
/// the system around them.
T.ApplicationWindow {
    id: window

    required property DeskModel desk

    width: 760
    height: 560
    minimumWidth: 720
    minimumHeight: 560
    title: desk.windowTitle
    color: Theme.colors.window

    component SwitchRow: RowLayout {
        id: row
        property string title
        property bool isOn
        signal turned(bool isOn)
        Layout.fillWidth: true
        spacing: 12
        Label {
            Layout.fillWidth: true
            text: row.title
            elide: Text.ElideRight
        }
        Switch {
            text: row.title
            isOn: row.isOn
            onTurned: isOn => row.turned(isOn)
        }
    }

    RowLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 20

        ColumnLayout {
            Layout.minimumWidth: 300
            Layout.maximumWidth: 300
            spacing: 14
            DeskMouse {
                Layout.alignment: Qt.AlignHCenter
                desk: window.desk
            }
            Label {
                Layout.fillWidth: true
                text: window.desk.mouseHelp
                color: Theme.colors.secondaryText
                font.pixelSize: Theme.smallSize
                wrapMode: Text.WordWrap
            }
            Section {
                Layout.fillHeight: false
                ColumnLayout {
                    spacing: 12
                    SwitchRow {
                        title: window.desk.plugTitle
                        isOn: window.desk.isPluggedIn
                        onTurned: isOn => window.desk.isPluggedIn = isOn
                    }
                    SwitchRow {
                        title: window.desk.inputMonitoringTitle
                        isOn: window.desk.hasInputMonitoring
                        onTurned: isOn => window.desk.hasInputMonitoring = isOn
                    }
                    SwitchRow {
                        title: window.desk.accessibilityTitle
                        isOn: window.desk.hasAccessibility
                        onTurned: isOn => window.desk.hasAccessibility = isOn
                    }
                    Button {
                        Layout.fillWidth: true
                        text: window.desk.interruptTitle
                        onClicked: window.desk.interruptTap()
                    }
                }
            }
            Item { Layout.fillHeight: true }
        }
        ColumnLayout {
            spacing: 8
            RowLayout {
                spacing: 10
                Label { text: window.desk.frontmostTitle }
                ComboBox {
                    Layout.fillWidth: true
                    text: window.desk.frontmostTitle
                    model: window.desk.applications
                    chosen: window.desk.frontmost
                    onActivated: index => window.desk.frontmost = index
                }
            }
            RowLayout {
                spacing: 10
                Label {
                    Layout.fillWidth: true
                    text: window.desk.logTitle
                    font.weight: Font.DemiBold
                }
                Button {
                    text: window.desk.clearTitle
                    onClicked: window.desk.log.clear()
                }
            }
            Rectangle {
                Layout.fillWidth: true
                Layout.fillHeight: true
                radius: 10
                color: Theme.colors.card
                border { width: 1; color: list.activeFocus ? Theme.colors.accent : Theme.colors.separator }
                ListView {
                    id: list
                    anchors { fill: parent; margins: 8 }
                    clip: true
                    activeFocusOnTab: true
                    boundsBehavior: Flickable.StopAtBounds
                    model: window.desk.log
                    Accessible.role: Accessible.List
                    Accessible.name: window.desk.logTitle
                    T.ScrollBar.vertical: ScrollBar { id: bar }
                    Keys.onUpPressed: bar.decrease()
                    Keys.onDownPressed: bar.increase()
                    onCountChanged: positionViewAtEnd()
                    delegate: Label {
                        required property string display
                        width: ListView.view.width
                        text: display
                        font.pixelSize: Theme.smallSize
                        bottomPadding: 3
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
    }
}
