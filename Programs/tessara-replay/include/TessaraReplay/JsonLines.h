#pragma once

#include <string>

#include "Platform/Dispatch/Clock.h"

namespace tessara {

struct ReplayRecord;

/// Appends `record` as one line of JSON with its newline. A `FinalReset` has no line.
void appendJsonLine(std::string& text, const ReplayRecord& record);

/// A moment in milliseconds, exactly: "1000.0", "1003.25", "1012.499999".
[[nodiscard]] std::string exactMillis(TimePoint moment);

}  // namespace tessara
