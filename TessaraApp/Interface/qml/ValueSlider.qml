import QtQuick
import QtQuick.Layouts
import Tessara.Style
import Tessara.ViewModels

/// A setting that is a number: coarse by the slider, fine by the stepper.
SettingRow {
    id: row

    required property SliderSetting slider

    setting: slider
    control: [
        Label {
            text: row.slider.text
            Accessible.ignored: true
            horizontalAlignment: Text.AlignRight
            opacity: row.enabled ? 1 : 0.5
        },
        Stepper {
            text: row.slider.title
            valueText: row.slider.text
            value: row.slider.value
            from: row.slider.from
            to: row.slider.to
            onValueChanged: row.slider.setTo(value)
            canStepUp: row.slider.canStepUp
            canStepDown: row.slider.canStepDown
            onStepUp: row.slider.stepUp()
            onStepDown: row.slider.stepDown()
        }
    ]
    Slider {
        Layout.fillWidth: true
        Layout.rightMargin: 36
        from: row.slider.from
        to: row.slider.to
        stepSize: row.slider.step
        value: row.slider.position
        onValueChanged: row.slider.slideTo(value)
        onJumped: target => row.slider.slideTo(target)
        Accessible.name: row.slider.title
        Accessible.description: row.slider.text
    }
}
