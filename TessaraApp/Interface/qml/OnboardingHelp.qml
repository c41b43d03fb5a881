pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// What is missing, thing by thing, and the one command that puts it right.
Rectangle {
    id: frame

    required property OnboardingHelpModel help

    function focusOnGrant(): void {
        run.forceActiveFocus(Qt.OtherFocusReason);
    }

    Layout.fillWidth: true
    implicitHeight: room.implicitHeight
    radius: 10
    color: Theme.colors.card
    border { width: 1; color: Theme.colors.separator }

    ColumnLayout {
        id: room
        anchors.fill: parent
        ColumnLayout {
            Layout.margins: 14
            spacing: 12
            Repeater {
                model: frame.help.findings
                StatusDot {
                    required property onboardingFinding modelData
                    level: modelData.isGranted ? StatusDot.Good : StatusDot.Waiting
                    text: modelData.text
                }
            }
            Rectangle {
                Layout.fillWidth: true
                implicitHeight: 1
                color: Theme.colors.separator
            }
            FactRow {
                label: frame.help.commandTitle
                value: frame.help.command
                valueFont { family: Theme.fixedFamily; pixelSize: Theme.smallSize }
                help: frame.help.commandHelp
            }
            Button {
                id: run
                text: frame.help.grantText
                onClicked: frame.help.grant()
            }
        }
    }
}
