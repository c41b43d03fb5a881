#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "TessaraCore/MacroStep.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/RepeatToken.h"

namespace tessara {

/// Hand the press or release of the button on as it is.
struct PassThroughButtonIntent {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons, here and below.
    std::int64_t number = 0;
    bool isDown = false;
    bool operator==(const PassThroughButtonIntent&) const = default;
};

/// Press a key with its modifiers, and leave it down until a `KeyUpIntent` of the same key.
struct KeyDownIntent {
    /// A virtual key code, here and below.
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyDownIntent&) const = default;
};

/// Release a key. It may come for a key that nothing holds, and does no harm then.
struct KeyUpIntent {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyUpIntent&) const = default;
};

/// Wait before the intents that follow.
struct DelayIntent {
    /// 0 and up.
    double millis = 0;
    bool operator==(const DelayIntent&) const = default;
};

/// Press a button of the mouse, whichever was really pressed, and leave it down until a
/// `MouseButtonUpIntent` of the same number.
struct MouseButtonDownIntent {
    std::int64_t number = 0;
    bool operator==(const MouseButtonDownIntent&) const = default;
};

/// Release a button of the mouse.
struct MouseButtonUpIntent {
    std::int64_t number = 0;
    bool operator==(const MouseButtonUpIntent&) const = default;
};

/// Begin to play a step again and again; the first playing is among the intents before this one.
struct StartRepeatIntent {
    RepeatToken token;
    bool operator==(const StartRepeatIntent&) const = default;
};

/// End a repeat.
struct StopRepeatIntent {
    /// The id of the token that started it.
    std::int64_t id = 0;
    bool operator==(const StopRepeatIntent&) const = default;
};

/// Set the resolution of the mouse.
struct SetDPIIntent {
    /// In counts per inch, not checked against what the mouse can do.
    std::int64_t dpi = 0;
    bool operator==(const SetDPIIntent&) const = default;
};

/// Start the application with this bundle identifier, or bring it to the front.
struct LaunchAppIntent {
    std::string bundleID;
    bool operator==(const LaunchAppIntent&) const = default;
};

/// Run the shortcut of the system with this name.
struct RunShortcutIntent {
    std::string name;
    bool operator==(const RunShortcutIntent&) const = default;
};

/// One thing that the button router asks the rest of the program to do. The router does none of it
/// itself. Intents are carried out in their order, and those of one event before those of the next.
///
/// A key stroke is a `KeyDownIntent` and a `KeyUpIntent`, a held key the one at the press and the
/// other at the release of its button.
///
/// An intent is never stored; what a document holds is the `Action` that it comes from.
using ButtonIntent =
    std::variant<PassThroughButtonIntent, KeyDownIntent, KeyUpIntent, DelayIntent,
                 MouseButtonDownIntent, MouseButtonUpIntent, StartRepeatIntent, StopRepeatIntent,
                 SetDPIIntent, LaunchAppIntent, RunShortcutIntent>;

/// What playing one step of a macro asks for, in order: a key or a button goes down and comes up, a
/// delay below 0 is one of 0, and a step that only presses or releases is just that.
[[nodiscard]] std::vector<ButtonIntent> intents(const MacroStep& step);

/// The same, added to the end of `sink`, whose room it uses.
void appendIntents(const MacroStep& step, std::vector<ButtonIntent>& sink);

}  // namespace tessara
