#pragma once

#include <chrono>

#include "TessaraReplay/ReplayRecord.h"

namespace tessara {

struct Profile;
struct ReplayInputs;

/// The longest that a replay waits for quiet after the last event of its recording.
inline constexpr std::chrono::seconds replayPatience{10};

/// Plays `inputs` in virtual time through fresh scroll, button and pointer pipelines with the
/// settings of `profile`, and tells `listener` what happens as it happens.
///
/// What is due at or before an input's time runs before it, and what an input causes at once runs
/// before the next. After the last event the time runs on until nothing is left to come, for
/// `replayPatience` at most. Then buttons, scroll and pointer are reset, in that order.
///
/// Everything runs within the call, on the caller's thread, and equal inputs give equal records.
void play(const ReplayInputs& inputs, const Profile& profile, const ReplayListener& listener);

}  // namespace tessara
