#include "Platform/Dispatch/Clock.h"

#include <cmath>
#include <cstdint>

#include "Stop.h"

namespace tessara {

TimePoint SystemClock::now() const noexcept {
    return TimePoint{std::chrono::steady_clock::now().time_since_epoch()};
}

std::chrono::nanoseconds nanosecondsFromMillis(double millis) {
    constexpr double nanosecondsPerMillisecond = 1e6;
    constexpr double tooMany = 0x1p63;
    const double nanoseconds = millis * nanosecondsPerMillisecond;
    if (!std::isfinite(nanoseconds)) stop("a duration in milliseconds is not finite");
    if (nanoseconds >= tooMany || nanoseconds < -tooMany) {
        stop("a duration in milliseconds does not fit 64 bits of nanoseconds");
    }
    return std::chrono::nanoseconds{static_cast<std::int64_t>(nanoseconds)};
}

double millisSinceStart(TimePoint moment) noexcept {
    return std::chrono::duration<double, std::milli>(moment.time_since_epoch()).count();
}

}  // namespace tessara
