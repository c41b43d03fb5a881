#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <linux/input-event-codes.h>

/// Which key of the kernel's a virtual key code means, and the other way round. Virtual key codes
/// name places on a keyboard and not what is printed there, and so do the kernel's codes: what a
/// key types is for the desktop's layout to say.
///
/// The document's virtual codes are those of the Macintosh keyboards (the constants kVK_ANSI_A and
/// on), the kernel's are in linux/input-event-codes.h; both are joined by the key's usage in the
/// USB HID Usage Tables, page 7. Each pair is one to one, which the compiler checks.
namespace tessara::LinuxKeyTable {

struct Key {
    std::uint16_t virtualCode = 0;  ///< below 128, as documents store it
    std::uint16_t kernelCode = 0;   ///< KEY_A and the like
};

/// How many keys a binding may be chosen from, and the modifier keys.
inline constexpr std::size_t catalogueKeyCount = 98;
inline constexpr std::size_t modifierKeyCount = 9;
/// Keys that no list offers, but a keyboard may have and the user press.
inline constexpr std::size_t furtherKeyCount = 13;

inline constexpr std::array<Key, catalogueKeyCount + modifierKeyCount + furtherKeyCount> keys{{
    // letters
    {0, KEY_A},
    {11, KEY_B},
    {8, KEY_C},
    {2, KEY_D},
    {14, KEY_E},
    {3, KEY_F},
    {5, KEY_G},
    {4, KEY_H},
    {34, KEY_I},
    {38, KEY_J},
    {40, KEY_K},
    {37, KEY_L},
    {46, KEY_M},
    {45, KEY_N},
    {31, KEY_O},
    {35, KEY_P},
    {12, KEY_Q},
    {15, KEY_R},
    {1, KEY_S},
    {17, KEY_T},
    {32, KEY_U},
    {9, KEY_V},
    {13, KEY_W},
    {7, KEY_X},
    {16, KEY_Y},
    {6, KEY_Z},
    // digits
    {29, KEY_0},
    {18, KEY_1},
    {19, KEY_2},
    {20, KEY_3},
    {21, KEY_4},
    {23, KEY_5},
    {22, KEY_6},
    {26, KEY_7},
    {28, KEY_8},
    {25, KEY_9},
    // function keys
    {122, KEY_F1},
    {120, KEY_F2},
    {99, KEY_F3},
    {118, KEY_F4},
    {96, KEY_F5},
    {97, KEY_F6},
    {98, KEY_F7},
    {100, KEY_F8},
    {101, KEY_F9},
    {109, KEY_F10},
    {103, KEY_F11},
    {111, KEY_F12},
    {105, KEY_F13},
    {107, KEY_F14},
    {113, KEY_F15},
    {106, KEY_F16},
    {64, KEY_F17},
    {79, KEY_F18},
    {80, KEY_F19},
    {90, KEY_F20},
    // editing
    {36, KEY_ENTER},
    {48, KEY_TAB},
    {49, KEY_SPACE},
    {51, KEY_BACKSPACE},
    {117, KEY_DELETE},
    {53, KEY_ESC},
    {114, KEY_INSERT},  // Help by name: the key left of Home, which keyboards here call Insert
    {115, KEY_HOME},
    {119, KEY_END},
    {116, KEY_PAGEUP},
    {121, KEY_PAGEDOWN},
    // arrows
    {123, KEY_LEFT},
    {124, KEY_RIGHT},
    {126, KEY_UP},
    {125, KEY_DOWN},
    // punctuation
    {27, KEY_MINUS},
    {24, KEY_EQUAL},
    {33, KEY_LEFTBRACE},
    {30, KEY_RIGHTBRACE},
    {42, KEY_BACKSLASH},
    {41, KEY_SEMICOLON},
    {39, KEY_APOSTROPHE},
    {43, KEY_COMMA},
    {47, KEY_DOT},
    {44, KEY_SLASH},
    {50, KEY_GRAVE},
    // keypad
    {82, KEY_KP0},
    {83, KEY_KP1},
    {84, KEY_KP2},
    {85, KEY_KP3},
    {86, KEY_KP4},
    {87, KEY_KP5},
    {88, KEY_KP6},
    {89, KEY_KP7},
    {91, KEY_KP8},
    {92, KEY_KP9},
    {69, KEY_KPPLUS},
    {78, KEY_KPMINUS},
    {67, KEY_KPASTERISK},
    {75, KEY_KPSLASH},
    {76, KEY_KPENTER},
    {65, KEY_KPDOT},
    // modifiers
    {59, KEY_LEFTCTRL},
    {58, KEY_LEFTALT},
    {56, KEY_LEFTSHIFT},
    {55, KEY_LEFTMETA},
    {63, KEY_FN},
    {62, KEY_RIGHTCTRL},
    {61, KEY_RIGHTALT},
    {60, KEY_RIGHTSHIFT},
    {54, KEY_RIGHTMETA},
    // further keys
    {10, KEY_102ND},
    {57, KEY_CAPSLOCK},
    {71, KEY_NUMLOCK},
    {72, KEY_VOLUMEUP},
    {73, KEY_VOLUMEDOWN},
    {74, KEY_MUTE},
    {81, KEY_KPEQUAL},
    {93, KEY_YEN},
    {94, KEY_RO},
    {95, KEY_KPCOMMA},
    {102, KEY_HANJA},    // Eisu
    {104, KEY_HANGEUL},  // Kana
    {110, KEY_COMPOSE},
}};

namespace detail {

inline constexpr std::size_t virtualCodeLimit = 128;
inline constexpr std::uint16_t noKey = 0xFFFF;

template <std::size_t Limit>
constexpr std::array<std::uint16_t, Limit> index(std::uint16_t Key::* from,
                                                 std::uint16_t Key::* to) {
    std::array<std::uint16_t, Limit> table{};
    table.fill(noKey);
    for (const auto& key : keys)
        table.at(key.*from) = key.*to;
    return table;
}

inline constexpr auto kernelCodes = index<virtualCodeLimit>(&Key::virtualCode, &Key::kernelCode);
inline constexpr auto virtualCodes = index<KEY_CNT>(&Key::kernelCode, &Key::virtualCode);

template <std::size_t Limit>
constexpr std::optional<std::uint16_t> find(const std::array<std::uint16_t, Limit>& table,
                                            std::uint16_t code) {
    if (code >= Limit || table[code] == noKey) return std::nullopt;
    return table[code];
}

}  // namespace detail

/// The kernel's code of a virtual key code; nothing for a key that the kernel has no code for.
[[nodiscard]] constexpr std::optional<std::uint16_t> kernelCode(std::uint16_t virtualCode) {
    return detail::find(detail::kernelCodes, virtualCode);
}

/// The virtual key code of a key of the kernel's; nothing for a key that has none.
[[nodiscard]] constexpr std::optional<std::uint16_t> virtualCode(std::uint16_t kernelCode) {
    return detail::find(detail::virtualCodes, kernelCode);
}

// Each key is found again from both sides, and so no code stands for two.
static_assert([] {
    for (const auto& key : keys) {
        if (kernelCode(key.virtualCode) != key.kernelCode) return false;
        if (virtualCode(key.kernelCode) != key.virtualCode) return false;
    }
    return true;
}());

}  // namespace tessara::LinuxKeyTable
