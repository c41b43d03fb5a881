#pragma once

#include <array>
#include <cstdint>

#include "Platform/CGEvent.h"

/// The modifier keys as events tell of them, in one table for the poster, which has to make their
/// events up, and for the platforms, which have to follow them. Not the modifiers of a binding:
/// those are `ModifierFlags`, which know no left and right. Any thread.

namespace tessara {

/// A physical modifier key: its virtual key code and the bits that it sets in `CGEvent::flags`.
struct ModifierKey {
    std::uint16_t code = 0;
    /// The generic bit, which the left and the right key share.
    std::uint64_t familyFlag = 0;
    /// The bit of this very key; 0 for the one that has none.
    std::uint64_t deviceFlag = 0;
    bool operator==(const ModifierKey&) const = default;
};

/// The modifier keys of a keyboard, left ones and Fn first. Caps Lock is not one of them: it is a
/// state and not a key that is held.
inline constexpr std::array<ModifierKey, 9> modifierKeys{{
    {.code = 59, .familyFlag = CGEventFlagMask::control, .deviceFlag = 0x1},     // left Control
    {.code = 58, .familyFlag = CGEventFlagMask::alternate, .deviceFlag = 0x20},  // left Option
    {.code = 56, .familyFlag = CGEventFlagMask::shift, .deviceFlag = 0x2},       // left Shift
    {.code = 55, .familyFlag = CGEventFlagMask::command, .deviceFlag = 0x8},     // left Command
    {.code = 63, .familyFlag = CGEventFlagMask::secondaryFn, .deviceFlag = 0},   // Fn
    {.code = 62, .familyFlag = CGEventFlagMask::control, .deviceFlag = 0x2000},  // right Control
    {.code = 61, .familyFlag = CGEventFlagMask::alternate, .deviceFlag = 0x40},  // right Option
    {.code = 60, .familyFlag = CGEventFlagMask::shift, .deviceFlag = 0x4},       // right Shift
    {.code = 54, .familyFlag = CGEventFlagMask::command, .deviceFlag = 0x10},    // right Command
}};

/// The modifier key with that code; null for any other key, Caps Lock included.
[[nodiscard]] constexpr const ModifierKey* findModifierKey(std::uint16_t code) {
    for (const auto& key : modifierKeys) {
        if (key.code == code) return &key;
    }
    return nullptr;
}

/// Whether the flags of a key's `flagsChanged` event say that it has gone down. An event that names
/// no particular key of the family is believed by the generic bit.
[[nodiscard]] constexpr bool isShownDown(const ModifierKey& key, std::uint64_t flags) {
    std::uint64_t deviceFlagsOfFamily = 0;
    for (const auto& row : modifierKeys) {
        if (row.familyFlag == key.familyFlag) deviceFlagsOfFamily |= row.deviceFlag;
    }
    if ((flags & deviceFlagsOfFamily) != 0) return (flags & key.deviceFlag) != 0;
    return (flags & key.familyFlag) != 0;
}

/// The virtual key code of Caps Lock, whose events carry `CGEventFlagMask::alphaShift`.
inline constexpr std::uint16_t capsLockKeyCode = 57;

}  // namespace tessara
