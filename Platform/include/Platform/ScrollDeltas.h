#pragma once

#include <cstdint>

#include "Platform/CGEvent.h"

/// How the several fields of a scroll event are made up of one distance, on platforms whose system
/// does not do that: a line is ten pixels. Nothing here looks at what the event was before, and
/// nothing scrolls. To the left and up is above zero. Any thread; nothing is allocated.

namespace tessara {

/// The values of the field `scrollWheelEventScrollPhase` within a gesture.
inline constexpr std::int64_t scrollPhaseBegan = 1;
inline constexpr std::int64_t scrollPhaseChanged = 2;
inline constexpr std::int64_t scrollPhaseEnded = 4;

/// Makes it the event of a wheel that turned by so many lines, the pixels worked out from them.
/// Both axes are written; type and phases stay as they are.
void setLineDeltas(CGEvent& event, std::int64_t verticalLines, std::int64_t horizontalLines);

/// Makes it a continuous event of so many pixels, the lines worked out from them: whole ones, cut
/// off toward zero, and with their fraction. Both axes are written; type and phases stay as they
/// are.
void setPixelDeltas(CGEvent& event, std::int64_t verticalPixels, std::int64_t horizontalPixels);

}  // namespace tessara
