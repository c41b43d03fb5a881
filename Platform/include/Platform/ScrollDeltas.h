#pragma once

#include <cstdint>

#include "Platform/CGEvent.h"

namespace tessara {

inline constexpr std::int64_t scrollPhaseBegan = 1;
inline constexpr std::int64_t scrollPhaseChanged = 2;
inline constexpr std::int64_t scrollPhaseEnded = 4;

/// Makes it the event of a wheel that turned by so many lines, the pixels worked out from them.
void setLineDeltas(CGEvent& event, std::int64_t verticalLines, std::int64_t horizontalLines);

/// Makes it a continuous event of so many pixels, the lines worked out from them.
void setPixelDeltas(CGEvent& event, std::int64_t verticalPixels, std::int64_t horizontalPixels);

}  // namespace tessara
