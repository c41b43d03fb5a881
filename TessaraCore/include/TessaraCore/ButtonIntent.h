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
    std::int64_t number = 0;
    bool isDown = false;
    bool operator==(const PassThroughButtonIntent&) const = default;
};

struct KeyDownIntent {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyDownIntent&) const = default;
};

struct KeyUpIntent {
    std::uint16_t code = 0;
    ModifierFlags modifiers = ModifierFlags::none;
    bool operator==(const KeyUpIntent&) const = default;
};

/// Wait before the intents that follow. Never negative.
struct DelayIntent {
    double millis = 0;
    bool operator==(const DelayIntent&) const = default;
};

struct MouseButtonDownIntent {
    std::int64_t number = 0;
    bool operator==(const MouseButtonDownIntent&) const = default;
};

struct MouseButtonUpIntent {
    std::int64_t number = 0;
    bool operator==(const MouseButtonUpIntent&) const = default;
};

struct StartRepeatIntent {
    RepeatToken token;
    bool operator==(const StartRepeatIntent&) const = default;
};

struct StopRepeatIntent {
    /// The id of the token that started it.
    std::int64_t id = 0;
    bool operator==(const StopRepeatIntent&) const = default;
};

struct SetDPIIntent {
    std::int64_t dpi = 0;
    bool operator==(const SetDPIIntent&) const = default;
};

struct LaunchAppIntent {
    std::string bundleID;
    bool operator==(const LaunchAppIntent&) const = default;
};

struct RunShortcutIntent {
    std::string name;
    bool operator==(const RunShortcutIntent&) const = default;
};

/// One thing that the button router asks the rest of the program to do. The router does none of it
/// itself.
using ButtonIntent =
    std::variant<PassThroughButtonIntent, KeyDownIntent, KeyUpIntent, DelayIntent,
                 MouseButtonDownIntent, MouseButtonUpIntent, StartRepeatIntent, StopRepeatIntent,
                 SetDPIIntent, LaunchAppIntent, RunShortcutIntent>;

/// What playing one step of a macro asks for, in order.
[[nodiscard]] std::vector<ButtonIntent> intents(const MacroStep& step);

/// The same, added to the end of `sink`.
void appendIntents(const MacroStep& step, std::vector<ButtonIntent>& sink);

}  // namespace tessara
