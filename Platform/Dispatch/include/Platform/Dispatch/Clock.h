#pragma once

#include <chrono>

namespace tessara {

/// The one time line of the program: monotonic, starting at a moment of no meaning. It stands still
/// or moves forward, and is unrelated to the time of day.
///
/// This is a tag for `std::chrono::time_point` and deliberately has no `now()`: whoever needs the
/// time is given a `Clock`.
struct MonotonicTimeline {
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<MonotonicTimeline>;
    static constexpr bool is_steady = true;
};

/// A moment on the program's time line, in whole nanoseconds.
using TimePoint = MonotonicTimeline::time_point;

/// Where the time comes from: the system's clock in the product, a number in tests and replays.
/// Handed in through constructors; nothing above Platform/ reads a clock by any other way.
class Clock {
  public:
    virtual ~Clock() = default;

    /// The present moment. Never less than what an earlier call gave. Any thread; does not
    /// allocate or block.
    [[nodiscard]] virtual TimePoint now() const noexcept = 0;
};

/// `CLOCK_MONOTONIC` of the system (clock_gettime(2)): it starts at some boot time, is never set,
/// and stands still while the machine sleeps. All of them tell the same time.
class SystemClock final : public Clock {
  public:
    [[nodiscard]] TimePoint now() const noexcept override;
};

/// A duration given in milliseconds as the data model has it, in whole nanoseconds, truncated
/// toward zero. A number that is not finite or does not fit stops the process.
[[nodiscard]] std::chrono::nanoseconds nanosecondsFromMillis(double millis);

/// A moment in milliseconds since the time line's start, as the data model has it. A double keeps
/// whole nanoseconds for some hundred days from the start, and microseconds for longer than that.
[[nodiscard]] double millisSinceStart(TimePoint moment) noexcept;

}  // namespace tessara
