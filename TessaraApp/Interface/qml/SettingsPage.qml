pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// The room of one page, beneath the notices and the picker of the profile. It scrolls when it is
/// taller than the window, and keeps lines at a readable length.
ScrollView {
    id: view

    required property SettingsViewModel settings
    default property alias page: column.data

    objectName: "page"

    ColumnLayout {
        anchors { left: parent.left; right: parent.right; margins: 24 }
        ColumnLayout {
            Layout.alignment: Qt.AlignHCenter
            Layout.fillWidth: true
            Layout.maximumWidth: 820
            Layout.topMargin: 18
            Layout.bottomMargin: 24
            spacing: 12

            Repeater {
                model: view.settings.notices
                NoticeBanner {
                    required property Notice modelData
                    notice: modelData
                }
            }
            ProfileScope {
                scope: view.settings.profileScope
                visible: view.settings.isInProfileScope
            }
            ColumnLayout {
                id: column
                Layout.topMargin: 10
                spacing: 22
            }
        }
    }
}
