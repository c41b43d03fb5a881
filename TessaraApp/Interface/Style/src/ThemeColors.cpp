#include "TessaraApp/Style/ThemeColors.h"

namespace tessara {

const ThemeColors& ThemeColors::light() {
    static const ThemeColors colors{
        .window = 0xf5f5f7,
        .card = 0xffffff,
        .field = 0xffffff,
        .fieldHovered = 0xf7f8fa,
        .fieldPressed = 0xe9ebef,
        .separator = 0xe6e7ea,
        .border = 0xc9ccd2,
        .track = 0xd3d6db,
        .knob = 0xffffff,
        .text = 0x1c1d20,
        .secondaryText = 0x5f646d,
        .accent = 0x2269d6,
        .accentPressed = 0x1a55b0,
        .onAccent = 0xffffff,
        .accentWash = 0xe9f0fc,
        .good = 0x1f8a43,
        .waiting = 0xb76200,
        .bad = 0xc9302c,
        .off = 0x767b84,
    };
    return colors;
}

const ThemeColors& ThemeColors::dark() {
    static const ThemeColors colors{
        .window = 0x1f2023,
        .card = 0x2a2b2f,
        .field = 0x3a3b41,
        .fieldHovered = 0x43454b,
        .fieldPressed = 0x4e5057,
        .separator = 0x3a3b40,
        .border = 0x55575e,
        .track = 0x54565d,
        .knob = 0xf4f5f7,
        .text = 0xf0f1f3,
        .secondaryText = 0xa9adb6,
        .accent = 0x5b9df5,
        .accentPressed = 0x7fb2f7,
        .onAccent = 0x10141b,
        .accentWash = 0x263345,
        .good = 0x4cc274,
        .waiting = 0xf0a040,
        .bad = 0xf2726d,
        .off = 0x8b909a,
    };
    return colors;
}

}  // namespace tessara
