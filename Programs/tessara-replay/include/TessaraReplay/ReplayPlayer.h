#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "TessaraReplay/ReplayRecord.h"

namespace tessara {

struct Config;
struct ReplayInputs;

/// The longest that a replay waits for quiet after the last event of its recording.
inline constexpr std::chrono::seconds replayPatience{10};

/// What a replay is played under.
struct ReplaySetting {
    const Config& config;
    /// The application in front; absent for one without an identifier.
    std::optional<std::string> frontmostBundleID;
};

/// Plays `inputs` in virtual time through the whole engine on a simulated desktop, from the mouse's
/// events at the tap to the posted ones that come back through it, and tells `listener` what
/// happens as it happens.
///
/// What is due at or before an input's time runs before it, and what an input causes at once runs
/// before the next. After the last event the time runs on until nothing is left to come, for
/// `replayPatience` at most. Then the engine stops, which lets go of buttons, scroll and pointer,
/// in that order.
///
/// Everything runs within the call, on the caller's thread, and equal inputs give equal records.
void play(const ReplayInputs& inputs, const ReplaySetting& setting, const ReplayListener& listener);

}  // namespace tessara
