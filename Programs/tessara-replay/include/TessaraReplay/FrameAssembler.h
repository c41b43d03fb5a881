#pragma once

#include <cstdint>
#include <variant>
#include <vector>

#include "Platform/Dispatch/Clock.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {

struct Recording;

/// A turn of a wheel by whole lines.
struct WheelTurn {
    ScrollAxis axis = ScrollAxis::vertical;
    /// As the kernel has them: a vertical turn is positive upward, a horizontal one to the right. 0
    /// is a turn that moves nothing.
    std::int64_t lines = 0;

    bool operator==(const WheelTurn&) const = default;
};

/// A button of the mouse gone down or up.
struct ButtonChange {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons: the kernel's code less BTN_LEFT, 0
    /// to 15.
    std::int64_t number = 0;
    bool isDown = false;

    bool operator==(const ButtonChange&) const = default;
};

/// One movement of the mouse in counts; both may be 0.
struct MouseMotion {
    std::int64_t dx = 0;  ///< positive to the right
    std::int64_t dy = 0;  ///< positive downward

    bool operator==(const MouseMotion&) const = default;
};

/// A modifier key gone down or up: left or right Shift, Control, Alt or Meta.
struct ModifierKeyChange {
    /// The virtual key code of the key.
    std::uint16_t code = 0;
    bool isDown = false;

    bool operator==(const ModifierKeyChange&) const = default;
};

/// Something that a hand did, and when.
struct ReplayInput {
    /// On the time line of the replay, which begins at `replayStart`.
    TimePoint at;
    /// The modifiers that are held from that moment on.
    ModifierFlags modifiers = ModifierFlags::none;
    /// The deed itself.
    std::variant<WheelTurn, ButtonChange, MouseMotion, ModifierKeyChange> what;

    bool operator==(const ReplayInput&) const = default;
};

/// A recording as the program meets it.
struct ReplayInputs {
    /// In the order in which they are handed on; their times never go back.
    std::vector<ReplayInput> inputs;
    /// The time of the recording's last event, whether or not that is an input.
    TimePoint end;
};

/// Where the first event of every recording stands on the time line.
inline constexpr TimePoint replayStart{std::chrono::milliseconds(1000)};

/// Turns the events of a device into inputs, keeping their distances in time.
///
/// All X and Y movement of one frame is one motion, at the place and the time of its first event.
/// Every other input has the place and time of its own event, and a last frame without its end
/// counts like any other. Keys that are no modifiers, keys that repeat, high-resolution wheel
/// values, and whatever else a device may report are left out. Codes are those of the kernel's
/// input-event-codes.h.
///
/// It never fails, for a `Recording` holds nothing that it cannot take.
[[nodiscard]] ReplayInputs assembleInputs(const Recording& recording);

}  // namespace tessara
