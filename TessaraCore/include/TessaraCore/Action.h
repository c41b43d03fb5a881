#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "TessaraCore/MacroStep.h"
#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// Leaves the button as it is: its press and its release go on to the applications.
struct PassThroughAction {
    bool operator==(const PassThroughAction&) const = default;
};

// A `code` is a virtual key code, and `modifiers` are what its events carry: see MacroStep.h.

/// Presses and releases a key, both when the button goes down.
struct KeyStrokeAction {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyStrokeAction&) const = default;
};

/// Plays a macro once, when the button goes down.
struct SequenceAction {
    /// In the order of playing; as many as the user likes, none included.
    std::vector<MacroStep> steps;
    bool operator==(const SequenceAction&) const = default;
};

/// Holds a key for as long as the button is held. Buttons that hold the same code with the same
/// modifiers share one key, which comes up with the last of them.
struct HoldAction {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const HoldAction&) const = default;
};

/// Plays a step at once, and again at each interval until the button is released.
struct RepeatWhileHeldAction {
    MacroStep step = KeyStep{};
    /// In milliseconds, as the user left it; it acts as 1 when it is below.
    double intervalMillis = 0;
    bool operator==(const RepeatWhileHeldAction&) const = default;
};

/// Changes the resolution of the mouse for as long as the button is held. Of several that are held
/// the newest is in force.
struct DPIShiftAction {
    /// In counts per inch, not checked against what the mouse can do.
    std::int64_t toDPI = 0;
    bool operator==(const DPIShiftAction&) const = default;
};

/// Starts an application or brings it to the front.
struct LaunchAppAction {
    /// The identifier by which the system knows the application.
    std::string bundleID;
    bool operator==(const LaunchAppAction&) const = default;
};

/// Runs a shortcut of the system by its name.
struct RunShortcutAction {
    /// As the system shows it.
    std::string name;
    bool operator==(const RunShortcutAction&) const = default;
};

/// What a button of the mouse can be made to do, as it stands in the document. `ButtonRouter` says
/// what comes of it, and nothing is checked or limited before that.
///
/// The stored form is an object whose one key names the case, "passThrough", "keyStroke",
/// "sequence", "hold", "repeatWhileHeld", "dpiShift", "launchApp" or "runShortcut", with the fields
/// of the case as its value; the steps of a sequence stand under "_0":
///
///     {"passThrough": {}}
///     {"keyStroke": {"code": 8, "modifiers": 16}}
///     {"sequence": {"_0": [{"keyDown": {"code": 8, "modifiers": 0}}, ...]}}
///     {"repeatWhileHeld": {"intervalMillis": 50, "step": {"mouseButton": {"number": 0}}}}
using Action =
    std::variant<PassThroughAction, KeyStrokeAction, SequenceAction, HoldAction,
                 RepeatWhileHeldAction, DPIShiftAction, LaunchAppAction, RunShortcutAction>;

}  // namespace tessara
