#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "Platform/Dispatch/Clock.h"

namespace tessara {

/// The moment that lies `duration` after `moment`, or before it when `duration` is negative;
/// nothing if that is not on the time line.
[[nodiscard]] inline std::optional<TimePoint> laterBy(TimePoint moment,
                                                      std::chrono::nanoseconds duration) noexcept {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(moment.time_since_epoch().count(), duration.count(), &sum)) {
        return std::nullopt;
    }
    return TimePoint(std::chrono::nanoseconds(sum));
}

}  // namespace tessara
