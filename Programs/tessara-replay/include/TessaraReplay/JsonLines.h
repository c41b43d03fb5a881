#pragma once

#include <string>

#include "Platform/Dispatch/Clock.h"

namespace tessara {

struct ReplayRecord;

// What the program prints, for other programs to read: one JSON object to a line.

/// Appends `record` as one line with its newline. A `FinalReset` has no line. The members stand in
/// a fixed order, the time "t" first:
///
///     {"t":1000.0,"event":"wheel","axis":"vertical","lines":-1,"verdict":"suppress"}
///     {"t":1008.0,"post":"scroll","axis":"vertical","pixels":-5,"phase":"began","modifiers":0}
///     {"t":1200.0,"effect":"dpi","value":400}
///
/// What a received event holds stands under the numbers of its fields, those of value 0 left out.
/// Bytes of a text that are not UTF-8 become replacement characters.
void appendJsonLine(std::string& text, const ReplayRecord& record);

/// A moment in milliseconds, exactly, with one to six decimals: "1000.0", "1003.25", "1012.499999".
/// For moments from the beginning of the clock on.
[[nodiscard]] std::string exactMillis(TimePoint moment);

}  // namespace tessara
