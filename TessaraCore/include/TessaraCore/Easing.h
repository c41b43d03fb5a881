#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TessaraCore/RawValue.h"

namespace tessara {

/// The shape of a glide: how the part of its way that is done grows with the part of its time that
/// is gone. It knows neither pixels nor milliseconds, which are the plan's business.
///
/// The formulas are the usual cubic easings of animation. With p the part of the time, 0 to 1:
enum class Easing : std::uint8_t {
    linear,    ///< p: the same speed throughout
    easeOut,   ///< 1 - (1 - p)³: fastest at the start, then slower and slower
    easeInOut  ///< 4 p³ up to the middle, 1 - (2 - 2 p)³ / 2 from there: slow, fast, slow
};

/// The stored names of the shapes.
template <>
inline constexpr auto rawValues<Easing> =
    std::to_array<std::string_view>({"linear", "easeOut", "easeInOut"});

/// The part of the way that is done, 0 to 1, when `progress` of the time is gone. A progress
/// outside 0 to 1 is limited to it. The result never falls as progress grows, and 0 and 1 give
/// exactly 0 and 1. Any thread may call it; it takes a few multiplications.
[[nodiscard]] double valueAt(Easing easing, double progress);

}  // namespace tessara
