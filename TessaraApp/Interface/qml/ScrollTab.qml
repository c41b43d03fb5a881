import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// The page on which the wheel of a profile is set.
ColumnLayout {
    id: tab

    required property ScrollPageModel page

    spacing: 22

    Section {
        title: tab.page.smoothingTitle
        ToggleRow { toggle: tab.page.smoothing }
    }
    Section {
        title: tab.page.directionsTitle
        ToggleRow { toggle: tab.page.vertical }
        ToggleRow { toggle: tab.page.horizontal }
        ChoiceRow { choice: tab.page.activation }
    }
    Section {
        title: tab.page.feelTitle
        ValueSlider { slider: tab.page.distance }
        ValueSlider { slider: tab.page.length }
        ChoiceRow { choice: tab.page.shape }
        ToggleRow { toggle: tab.page.inversion }
    }
    Section {
        title: tab.page.accelerationTitle
        ToggleRow { toggle: tab.page.acceleration }
        ValueSlider { slider: tab.page.gain }
        ValueSlider { slider: tab.page.limit }
    }
    Section {
        title: tab.page.previewTitle
        ScrollPreview { preview: tab.page.preview }
    }
    Disclosure {
        title: tab.page.advancedTitle
        enabled: tab.page.isAdvancedEnabled
        ValueSlider { slider: tab.page.interval }
        ValueSlider { slider: tab.page.ceiling }
        Button {
            text: tab.page.resetAllText
            onClicked: tab.page.resetAll()
        }
    }
}
