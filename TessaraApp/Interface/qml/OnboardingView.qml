pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tessara.Style
import Tessara.ViewModels

/// The onboarding window: one step at a time, with the way back and on beneath it.
T.ApplicationWindow {
    id: window

    required property OnboardingViewModel onboarding

    width: 640
    height: 520
    // Neither resized nor minimised: it stands there until the user is through or closes it.
    flags: Qt.Window | Qt.CustomizeWindowHint | Qt.WindowTitleHint | Qt.WindowSystemMenuHint
           | Qt.WindowCloseButtonHint
    minimumWidth: width
    maximumWidth: width
    minimumHeight: height
    maximumHeight: height
    title: onboarding.windowTitle
    color: Theme.colors.window
    onVisibleChanged: onboarding.setWatching(visible)
    Shortcut { sequences: ["Ctrl+W", "Esc"]; onActivated: window.close() }
    Shortcut { sequences: ["Return", "Enter"]; onActivated: window.onboarding.advance() }
    Connections {
        target: window.onboarding
        function onFinished() { window.close() }
        function onStepChanged() { page.contentY = 0 }
        function onShowsHelpChanged() {
            column.ensurePolished();
            help.focusOnGrant();
        }
    }

    component Paragraph: Label {
        Layout.fillWidth: true
        visible: text !== ""
        lineHeight: 1.15
        wrapMode: Text.WordWrap
    }

    /// A symbol on a tile of its own, as large as it is made.
    component Tile: Rectangle {
        property alias symbol: icon.symbol
        implicitWidth: 36
        implicitHeight: 36
        radius: 10
        color: Theme.colors.accentWash
        Icon {
            id: icon
            anchors { fill: parent; margins: 8 }
            color: Theme.colors.accent
        }
    }

    ColumnLayout {
        anchors { fill: parent; margins: 32; topMargin: 28; bottomMargin: 24 }
        spacing: 20

        RowLayout {
            spacing: 16
            Tile {
                implicitWidth: 48
                implicitHeight: 48
                symbol: window.onboarding.symbol
            }
            ColumnLayout {
                spacing: 2
                Label {
                    Layout.fillWidth: true
                    text: window.onboarding.title
                    font { pixelSize: Theme.headlineSize; weight: Font.DemiBold }
                    wrapMode: Text.WordWrap
                    Accessible.role: Accessible.Heading
                }
                Explain { text: window.onboarding.progressText }
            }
        }
        ScrollView {
            id: page
            objectName: "page"
            Layout.fillWidth: true
            Layout.fillHeight: true
            // The scroll bar stands in the window's margin.
            Layout.rightMargin: -24
            ColumnLayout {
                id: column
                anchors { left: parent.left; right: parent.right; rightMargin: 24 }
                spacing: 14
                RowLayout {
                    visible: state.text !== ""
                    spacing: 10
                    Icon {
                        implicitWidth: 20
                        implicitHeight: 20
                        symbol: window.onboarding.stateSymbol
                        color: [Theme.colors.off, Theme.colors.good,
                                Theme.colors.waiting][window.onboarding.stateLevel]
                    }
                    Label {
                        id: state
                        Layout.fillWidth: true
                        text: window.onboarding.stateText
                        font.weight: Font.DemiBold
                    }
                }
                Paragraph { text: window.onboarding.leadText }
                Repeater {
                    model: window.onboarding.bullets
                    RowLayout {
                        id: bullet
                        required property onboardingBullet modelData
                        spacing: 14
                        Tile {
                            Layout.alignment: Qt.AlignTop
                            symbol: bullet.modelData.symbol
                        }
                        Paragraph {
                            Layout.fillHeight: true
                            text: bullet.modelData.text
                            verticalAlignment: Text.AlignVCenter
                        }
                    }
                }
                Paragraph {
                    text: window.onboarding.detailText
                    color: Theme.colors.secondaryText
                }
                Paragraph { text: window.onboarding.extraText }
                ColumnLayout {
                    visible: window.onboarding.asksForGrant
                    spacing: 14
                    Paragraph { text: window.onboarding.howToText }
                    Button {
                        text: window.onboarding.openSettingsText
                        onClicked: window.onboarding.openSettings()
                    }
                    OnboardingHelp {
                        id: help
                        help: window.onboarding.help
                        visible: window.onboarding.showsHelp
                    }
                    Paragraph { text: window.onboarding.watchingText }
                    Explain { text: window.onboarding.promiseText }
                }
                Section {
                    visible: window.onboarding.offersLogin
                    ColumnLayout {
                        spacing: 6
                        RowLayout {
                            spacing: 12
                            Label {
                                Layout.fillWidth: true
                                text: window.onboarding.startAtLoginText
                                Accessible.ignored: true
                            }
                            Switch {
                                text: window.onboarding.startAtLoginText
                                isOn: window.onboarding.startsAtLogin
                                onTurned: isOn => window.onboarding.startsAtLogin = isOn
                            }
                        }
                        Explain { text: window.onboarding.loginStatusText }
                        Explain {
                            text: window.onboarding.loginErrorText
                            color: Theme.colors.bad
                        }
                    }
                }
                Paragraph {
                    text: window.onboarding.closingText
                    color: Theme.colors.secondaryText
                }
            }
        }
        Item {
            Layout.fillWidth: true
            implicitHeight: next.implicitHeight
            Button {
                text: window.onboarding.backText
                visible: window.onboarding.canGoBack
                onClicked: window.onboarding.goBack()
            }
            Row {
                anchors.centerIn: parent
                spacing: 8
                Repeater {
                    model: window.onboarding.stepCount
                    Rectangle {
                        required property int index
                        width: 8
                        height: 8
                        radius: 4
                        color: index === window.onboarding.step ? Theme.colors.accent : Theme.colors.track
                    }
                }
            }
            Button {
                id: next
                anchors.right: parent.right
                text: window.onboarding.primaryText
                highlighted: true
                onClicked: window.onboarding.advance()
            }
        }
    }
}
