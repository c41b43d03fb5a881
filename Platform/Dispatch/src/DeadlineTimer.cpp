#include "DeadlineTimer.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <sys/timerfd.h>

namespace tessara {
namespace {

int openTimer() {
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    if (timer < 0) {
        throw std::system_error(errno, std::generic_category(), "a queue's timer was refused");
    }
    return timer;
}

}  // namespace

DeadlineTimer::DeadlineTimer(asio::io_context& io)
    : descriptor_(io, openTimer()), fileDescriptor_(descriptor_.native_handle()) {}

// It sets the kernel's timer: nothing of the object itself, and yet no reading.
// NOLINTNEXTLINE(readability-make-member-function-const)
void DeadlineTimer::set(TimePoint moment) noexcept {
    constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
    itimerspec setting{};  // all zero: never
    if (moment != TimePoint::max()) {
        const std::int64_t nanos = std::max<std::int64_t>(moment.time_since_epoch().count(), 1);
        setting.it_value = {nanos / nanosecondsPerSecond, nanos % nanosecondsPerSecond};
    }
    (void)timerfd_settime(fileDescriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
}

}  // namespace tessara
