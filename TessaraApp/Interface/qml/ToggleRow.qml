import Tessara.Style
import Tessara.ViewModels

/// A setting that is on or off.
SettingRow {
    id: row

    required property ToggleSetting toggle

    setting: toggle
    control: Switch {
        text: row.toggle.title
        checked: row.toggle.isOn
        onCheckedChanged: row.toggle.turn(checked)
    }
}
