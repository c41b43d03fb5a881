#pragma once

#include <cstdint>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {

/// One event of a mechanical wheel.
struct ScrollInput {
    /// Lines moved; the sign is the direction.
    std::int64_t lineDelta = 0;
    ScrollAxis axis = ScrollAxis::vertical;
    /// The modifiers at the event as they came, Caps Lock included.
    ModifierFlags modifiers = ModifierFlags::none;
    /// The time of the event on the one clock that the caller uses throughout.
    double timestampMillis = 0;
    /// Handed on to the plan, and of no effect on it.
    DeviceID deviceID = DeviceID::unknown;

    bool operator==(const ScrollInput&) const = default;
};

}  // namespace tessara
