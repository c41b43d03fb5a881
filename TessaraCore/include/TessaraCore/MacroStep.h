#pragma once

#include <cstdint>
#include <variant>

#include "TessaraCore/ModifierFlags.h"

namespace tessara {

// A `code` is a virtual key code. It names a place on the keyboard and not what is printed there;
// what the key types is for the desktop's layout to say. `modifiers` are those that the key's event
// carries; they need not be held. Neither is checked here.

/// Presses and releases a key.
struct KeyStep {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyStep&) const = default;
};

/// Presses a key and leaves it down, for a later step to release.
struct KeyDownStep {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyDownStep&) const = default;
};

/// Releases a key, whether or not a step before has pressed it.
struct KeyUpStep {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyUpStep&) const = default;
};

/// Waits before the steps that follow. A negative time, which a document may hold, waits not at
/// all.
struct DelayStep {
    double millis = 0;
    bool operator==(const DelayStep&) const = default;
};

/// Presses and releases a button of the mouse.
struct MouseButtonStep {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons. Not checked here.
    std::int64_t number = 0;
    bool operator==(const MouseButtonStep&) const = default;
};

/// One step of a macro, as it stands in the document. What is really done with a step is told by
/// its `intents` (ButtonIntent.h).
///
/// The stored form is an object whose one key names the case, "key", "keyDown", "keyUp", "delay" or
/// "mouseButton", with the fields of the case as its value:
///
///     {"key": {"code": 8, "modifiers": 16}}
///     {"delay": {"millis": 20}}
using MacroStep = std::variant<KeyStep, KeyDownStep, KeyUpStep, DelayStep, MouseButtonStep>;

}  // namespace tessara
