#include "TessaraApp/Style/ThemeColors.h"

namespace tessara {

const ThemeColors& ThemeColors::light() {
    static const ThemeColors colors = [] {
        ThemeColors made;
        made.window = QColor(0xf5f5f7);
        made.card = QColor(0xffffff);
        made.field = QColor(0xffffff);
        made.fieldHovered = QColor(0xf7f8fa);
        made.fieldPressed = QColor(0xe9ebef);
        made.separator = QColor(0xe6e7ea);
        made.border = QColor(0xc9ccd2);
        made.track = QColor(0xd3d6db);
        made.knob = QColor(0xffffff);
        made.text = QColor(0x1c1d20);
        made.secondaryText = QColor(0x5f646d);
        made.accent = QColor(0x2269d6);
        made.accentPressed = QColor(0x1a55b0);
        made.onAccent = QColor(0xffffff);
        made.accentWash = QColor(0xe4edfb);
        made.good = QColor(0x1f8a43);
        made.waiting = QColor(0xb76200);
        made.bad = QColor(0xc9302c);
        made.off = QColor(0x767b84);
        return made;
    }();
    return colors;
}

const ThemeColors& ThemeColors::dark() {
    static const ThemeColors colors = [] {
        ThemeColors made;
        made.window = QColor(0x1f2023);
        made.card = QColor(0x2a2b2f);
        made.field = QColor(0x3a3b41);
        made.fieldHovered = QColor(0x43454b);
        made.fieldPressed = QColor(0x4e5057);
        made.separator = QColor(0x3a3b40);
        made.border = QColor(0x55575e);
        made.track = QColor(0x54565d);
        made.knob = QColor(0xf4f5f7);
        made.text = QColor(0xf0f1f3);
        made.secondaryText = QColor(0xa9adb6);
        made.accent = QColor(0x5b9df5);
        made.accentPressed = QColor(0x7fb2f7);
        made.onAccent = QColor(0x10141b);
        made.accentWash = QColor(0x2b3a50);
        made.good = QColor(0x4cc274);
        made.waiting = QColor(0xf0a040);
        made.bad = QColor(0xf2726d);
        made.off = QColor(0x8b909a);
        return made;
    }();
    return colors;
}

}  // namespace tessara
