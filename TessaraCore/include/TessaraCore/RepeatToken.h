#pragma once

#include <cstdint>

#include "TessaraCore/MacroStep.h"

namespace tessara {

/// The order to play a step again and again until the repeat is stopped by its id.
struct RepeatToken {
    /// The number of the button that owns the repeat.
    std::int64_t id = 0;
    MacroStep step = KeyStep{};
    /// At least 1.
    double intervalMillis = 1;
    /// The timestamp of the press. The first playing is the press's own, and the next comes one
    /// interval later.
    double startedAtMillis = 0;

    bool operator==(const RepeatToken&) const = default;
};

}  // namespace tessara
