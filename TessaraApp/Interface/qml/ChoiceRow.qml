import Tessara.Style
import Tessara.ViewModels

/// A setting that is one of a few.
SettingRow {
    id: row

    required property ChoiceSetting choice

    setting: choice
    control: ComboBox {
        text: row.choice.title
        model: row.choice.labels
        chosen: row.choice.currentIndex
        onActivated: index => row.choice.choose(index)
    }
}
