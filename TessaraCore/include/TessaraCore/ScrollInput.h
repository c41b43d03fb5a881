#pragma once

#include <cstdint>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {

/// One event of a mechanical wheel, which moves in whole lines. Devices that scroll in pixels, such
/// as trackpads, make no such inputs: the engine leaves their events alone.
struct ScrollInput {
    /// Lines moved, most often 1 or -1; the sign is the direction. 0 passes through the
    /// transformer.
    std::int64_t lineDelta = 0;
    /// The wheel that was turned. Each axis glides by itself.
    ScrollAxis axis = ScrollAxis::vertical;
    /// The modifiers at the event as they came, Caps Lock included: a change of any of them ends
    /// the gesture under way.
    ModifierFlags modifiers = ModifierFlags::none;
    /// The time of the event in milliseconds, fractions included, on the one clock that the caller
    /// uses throughout. Finite. It may lie before that of the input before.
    double timestampMillis = 0;
    /// Handed on to the plan, and of no effect on it.
    DeviceID deviceID = DeviceID::unknown;

    bool operator==(const ScrollInput&) const = default;
};

}  // namespace tessara
