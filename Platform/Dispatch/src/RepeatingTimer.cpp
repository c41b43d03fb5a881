#include "RepeatingTimer.h"

#include <cstdint>
#include <utility>

#include "LaterBy.h"
#include "Stop.h"

namespace tessara {

RepeatingTimer::RepeatingTimer(std::chrono::nanoseconds interval, std::chrono::nanoseconds leeway,
                               Handler handler)
    : interval_(interval),
      leeway_(leeway),
      handler_(std::make_shared<Handler>(std::move(handler))) {
    if (interval <= interval.zero()) stop("a timer was started with an interval not above zero");
    if (leeway < leeway.zero()) stop("a timer was started with a leeway below zero");
}

TimePoint RepeatingTimer::deadlineAfter(TimePoint deadline, TimePoint now) const noexcept {
    // Unsigned, for the distance between two moments need not fit a signed one.
    const auto passed = static_cast<std::uint64_t>(now.time_since_epoch().count()) -
                        static_cast<std::uint64_t>(deadline.time_since_epoch().count());
    const auto sinceMultiple = passed % static_cast<std::uint64_t>(interval_.count());
    const auto toNext =
        interval_ - std::chrono::nanoseconds{static_cast<std::int64_t>(sinceMultiple)};
    return laterBy(now, toNext).value_or(TimePoint::max());
}

void RepeatingTimer::fire() {
    std::shared_ptr<Handler> handler;
    {
        MutexLock lock(mutex_);
        handler = handler_;
    }
    if (handler) (*handler)();
}

void RepeatingTimer::release() noexcept {
    std::shared_ptr<Handler> released;  // destroyed once the lock is let go
    MutexLock lock(mutex_);
    released.swap(handler_);
}

}  // namespace tessara
