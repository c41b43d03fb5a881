#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TessaraCore/RawValue.h"

namespace tessara {

/// The shape of a glide: how the part of its way that is done grows with the part of its time that
/// is gone.
enum class Easing : std::uint8_t {
    linear,    ///< the same speed throughout
    easeOut,   ///< fastest at the start; a cubic
    easeInOut  ///< slow, fast, slow; two cubics that meet in the middle
};

template <>
inline constexpr auto rawValues<Easing> =
    std::to_array<std::string_view>({"linear", "easeOut", "easeInOut"});

/// The part of the way that is done, 0 to 1, when `progress` of the time is gone. A progress
/// outside 0 to 1 is limited to it. The result never falls as progress grows, and 0 and 1 give
/// exactly 0 and 1.
[[nodiscard]] double valueAt(Easing easing, double progress);

}  // namespace tessara
