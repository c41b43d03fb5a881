#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "TessaraCore/MacroStep.h"
#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// Leaves the button as it is.
struct PassThroughAction {
    bool operator==(const PassThroughAction&) const = default;
};

/// Presses and releases a key, both when the button goes down.
struct KeyStrokeAction {
    /// A virtual key code.
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyStrokeAction&) const = default;
};

/// Plays a macro once, when the button goes down.
struct SequenceAction {
    /// As many as the user likes, none included.
    std::vector<MacroStep> steps;
    bool operator==(const SequenceAction&) const = default;
};

/// Holds a key for as long as the button is held.
struct HoldAction {
    /// A virtual key code.
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const HoldAction&) const = default;
};

/// Plays a step at once, and again at each interval until the button is released.
struct RepeatWhileHeldAction {
    MacroStep step = KeyStep{};
    /// As the user left it; it acts as 1 when it is below.
    double intervalMillis = 0;
    bool operator==(const RepeatWhileHeldAction&) const = default;
};

/// Changes the resolution of the mouse for as long as the button is held.
struct DPIShiftAction {
    /// In dots per inch, not checked against what the mouse can do.
    std::int64_t toDPI = 0;
    bool operator==(const DPIShiftAction&) const = default;
};

/// Starts an application or brings it to the front.
struct LaunchAppAction {
    std::string bundleID;
    bool operator==(const LaunchAppAction&) const = default;
};

/// Runs a shortcut of the system by its name.
struct RunShortcutAction {
    /// As the system shows it.
    std::string name;
    bool operator==(const RunShortcutAction&) const = default;
};

/// What a button of the mouse can be made to do, as it stands in the document.
using Action =
    std::variant<PassThroughAction, KeyStrokeAction, SequenceAction, HoldAction,
                 RepeatWhileHeldAction, DPIShiftAction, LaunchAppAction, RunShortcutAction>;

}  // namespace tessara
