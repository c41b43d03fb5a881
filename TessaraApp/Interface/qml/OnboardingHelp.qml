pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// What is missing, thing by thing, and the one command that puts it right.
Rectangle {
    id: frame

    required property OnboardingHelpModel help

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
            spacing: 10
            Repeater {
                model: frame.help.findings
                RowLayout {
                    id: row
                    required property onboardingFinding modelData
                    spacing: 10
                    Icon {
                        Layout.alignment: Qt.AlignTop
                        implicitWidth: 18
                        implicitHeight: 18
                        symbol: row.modelData.symbol
                        color: row.modelData.isGranted ? Theme.colors.good : Theme.colors.waiting
                    }
                    Label {
                        Layout.fillWidth: true
                        text: row.modelData.text
                        wrapMode: Text.Wrap
                    }
                }
            }
            Explain { text: frame.help.commandText }
            TextEdit {
                Layout.fillWidth: true
                text: frame.help.command
                readOnly: true
                selectByMouse: true
                activeFocusOnTab: true
                color: Theme.colors.text
                selectionColor: Theme.colors.accent
                selectedTextColor: Theme.colors.onAccent
                font { family: Theme.fixedFamily; pixelSize: Theme.smallSize }
                wrapMode: TextEdit.WrapAnywhere
                Accessible.role: Accessible.EditableText
                Accessible.name: frame.help.commandText
            }
            Button {
                text: frame.help.grantText
                onClicked: frame.help.grant()
            }
        }
    }
}
