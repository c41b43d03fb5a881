pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Tessara.Interface
import Tessara.Style
import Tessara.ViewModels

/// Something to scroll, and what one click of the wheel does, as a line over time and in words.
ColumnLayout {
    id: view

    required property ScrollPreviewModel preview

    Layout.fillWidth: true
    spacing: 12

    component Panel: Rectangle {
        Layout.fillWidth: true
        Layout.preferredWidth: 1
        Layout.preferredHeight: 190
        radius: 8
        color: Theme.colors.window
        border { width: 1; color: Theme.colors.separator }
    }

    RowLayout {
        spacing: 16
        Layout.topMargin: 4
        Panel {
            ListView {
                id: list
                anchors { fill: parent; margins: 1 }
                clip: true
                currentIndex: -1
                activeFocusOnTab: true
                boundsBehavior: Flickable.StopAtBounds
                model: view.preview.rows
                Accessible.role: Accessible.List
                Accessible.name: view.preview.panelLabel
                T.ScrollBar.vertical: ScrollBar { id: bar }
                Keys.onUpPressed: bar.decrease()
                Keys.onDownPressed: bar.increase()
                delegate: Item {
                    id: line
                    required property scrollPreviewRow modelData
                    width: ListView.view.width
                    height: 26
                    Label {
                        id: number
                        anchors { left: parent.left; leftMargin: 12; verticalCenter: parent.verticalCenter }
                        text: line.modelData.number
                        color: Theme.colors.secondaryText
                        font { family: Theme.fixedFamily; pixelSize: Theme.smallSize }
                    }
                    Rectangle {
                        anchors {
                            left: number.right; leftMargin: 12
                            right: parent.right; rightMargin: 20
                            verticalCenter: parent.verticalCenter
                        }
                        height: line.modelData.isEmphasised ? 12 : 6
                        radius: 3
                        color: line.modelData.isEmphasised ? Theme.colors.accent
                                                           : Theme.colors.secondaryText
                        opacity: line.modelData.isEmphasised ? 0.35 : 0.18
                    }
                }
            }
            Rectangle {
                anchors.fill: parent
                radius: 8
                color: "transparent"
                border { width: 2; color: Theme.colors.accent }
                visible: list.activeFocus
            }
        }
        Panel {
            GlideChart {
                anchors.fill: parent
                preview: view.preview
                lineColor: Theme.colors.accent
                baselineColor: Theme.colors.secondaryText
                Accessible.role: Accessible.Chart
                Accessible.name: view.preview.chartLabel
            }
        }
    }
    Label {
        Layout.fillWidth: true
        text: view.preview.planText
        wrapMode: Text.WordWrap
    }
    Explain { text: view.preview.liveStatus }
}
