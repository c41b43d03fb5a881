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
    }

    component Paragraph: Label {
        Layout.fillWidth: true
        visible: text !== ""
        lineHeight: 1.15
        wrapMode: Text.WordWrap
    }

    component SymbolRow: RowLayout {
        property alias symbol: icon.symbol
        property alias symbolColor: icon.color
        property alias text: label.text
        property alias textWeight: label.font.weight
        Layout.fillWidth: true
        spacing: 12
        Icon {
            id: icon
            Layout.alignment: Qt.AlignTop
            implicitWidth: 20
            implicitHeight: 20
        }
        Label {
            id: label
            Layout.fillWidth: true
            lineHeight: 1.15
            wrapMode: Text.WordWrap
        }
    }

    ColumnLayout {
        anchors { fill: parent; margins: 32; bottomMargin: 24 }
        spacing: 16

        ColumnLayout {
            spacing: 4
            Label {
                Layout.fillWidth: true
                text: window.onboarding.title
                font { pixelSize: Theme.headlineSize; weight: Font.DemiBold }
                wrapMode: Text.WordWrap
                Accessible.role: Accessible.Heading
            }
            Explain { text: window.onboarding.progressText }
        }
        ScrollView {
            objectName: "page"
            Layout.fillWidth: true
            Layout.fillHeight: true
            ColumnLayout {
                anchors { left: parent.left; right: parent.right; rightMargin: 8 }
                spacing: 14
                SymbolRow {
                    visible: text !== ""
                    symbol: window.onboarding.stateSymbol
                    symbolColor: [Theme.colors.off, Theme.colors.good,
                                  Theme.colors.waiting][window.onboarding.stateLevel]
                    text: window.onboarding.stateText
                    textWeight: Font.DemiBold
                }
                Paragraph { text: window.onboarding.leadText }
                Repeater {
                    model: window.onboarding.bullets
                    SymbolRow {
                        required property onboardingBullet modelData
                        symbol: modelData.symbol
                        symbolColor: Theme.colors.accent
                        text: modelData.text
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
                        help: window.onboarding.help
                        visible: window.onboarding.showsHelp
                    }
                    Paragraph { text: window.onboarding.watchingText }
                    Explain { text: window.onboarding.promiseText }
                }
                ColumnLayout {
                    visible: window.onboarding.offersLogin
                    spacing: 6
                    RowLayout {
                        spacing: 12
                        Label {
                            Layout.fillWidth: true
                            text: window.onboarding.startAtLoginText
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
                Paragraph {
                    text: window.onboarding.closingText
                    color: Theme.colors.secondaryText
                }
            }
        }
        RowLayout {
            spacing: 10
            Button {
                text: window.onboarding.backText
                visible: window.onboarding.canGoBack
                onClicked: window.onboarding.goBack()
            }
            Item { Layout.fillWidth: true }
            Button {
                text: window.onboarding.primaryText
                highlighted: true
                onClicked: window.onboarding.advance()
            }
        }
    }
}
