#include "TessaraEngine/MonotonicClock.h"

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Clock.h"

namespace tessara {

std::uint64_t MonotonicClock::ticks() const noexcept {
    return static_cast<std::uint64_t>(clock_.now().time_since_epoch().count());
}

double MonotonicClock::nanoseconds(std::uint64_t ticks) noexcept {
    return static_cast<double>(ticks);
}

double MonotonicClock::milliseconds(std::uint64_t ticks) noexcept {
    return nanoseconds(ticks) / 1e6;
}

double MonotonicClock::now() const noexcept {
    return milliseconds(ticks());
}

double MonotonicClock::timestamp(const CGEvent& event) const noexcept {
    return milliseconds(event.timestampNanos != 0 ? event.timestampNanos : ticks());
}

}  // namespace tessara
