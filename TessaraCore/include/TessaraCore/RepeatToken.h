#pragma once

#include <cstdint>

#include "TessaraCore/MacroStep.h"

namespace tessara {

/// The order to play a step again and again until the repeat is stopped by its id. It is passed
/// from the router to whoever plays, and never stored.
struct RepeatToken {
    /// The number of the button that owns the repeat; no two repeats of one button run at a time.
    std::int64_t id = 0;
    /// What each playing does, delays included.
    MacroStep step = KeyStep{};
    /// The time from one playing to the next in milliseconds, at least 1.
    double intervalMillis = 1;
    /// The timestamp of the press in milliseconds. The first playing is the press's own, and the
    /// next comes one interval later.
    double startedAtMillis = 0;

    bool operator==(const RepeatToken&) const = default;
};

}  // namespace tessara
