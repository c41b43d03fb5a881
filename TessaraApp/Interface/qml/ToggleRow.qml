import Tessara.Style
import Tessara.ViewModels

/// A setting that is on or off.
SettingRow {
    id: row

    required property ToggleSetting toggle

    setting: toggle
    control: Switch {
        text: row.toggle.title
        isOn: row.toggle.isOn
        onTurned: isOn => row.toggle.turn(isOn)
    }
}
