#pragma once

#include <cstdint>
#include <variant>

#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// Presses and releases a key.
struct KeyStep {
    /// A virtual key code.
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyStep&) const = default;
};

/// Presses a key and leaves it down.
struct KeyDownStep {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyDownStep&) const = default;
};

/// Releases a key.
struct KeyUpStep {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyUpStep&) const = default;
};

/// Waits. A negative time, which a document may hold, waits not at all.
struct DelayStep {
    /// In milliseconds.
    double millis = 0;
    bool operator==(const DelayStep&) const = default;
};

/// Presses and releases a button of the mouse.
struct MouseButtonStep {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons.
    std::int64_t number = 0;
    bool operator==(const MouseButtonStep&) const = default;
};

/// One step of a macro, as it stands in the document. `code` is a virtual key code. What is really
/// done with a step is told by its `intents` (ButtonIntent.h).
using MacroStep = std::variant<KeyStep, KeyDownStep, KeyUpStep, DelayStep, MouseButtonStep>;

}  // namespace tessara
