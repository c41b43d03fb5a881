#pragma once

#include <cstdint>

namespace tessara {

class CGEvent;
class Clock;

/// The time in the numbers of the data model: milliseconds and nanoseconds as doubles, on the time
/// line of the clock it was made with. One tick is one nanosecond. It keeps nothing but the
/// reference; the clock must outlive it. Any thread; does not allocate or block.
class MonotonicClock {
  public:
    explicit MonotonicClock(const Clock& clock) noexcept : clock_(clock) {}

    /// The present, counted from the time line's start.
    [[nodiscard]] std::uint64_t ticks() const noexcept;

    /// Ticks in nanoseconds; exact up to 2^53, which is a hundred days.
    [[nodiscard]] static double nanoseconds(std::uint64_t ticks) noexcept;
    /// Ticks in milliseconds.
    [[nodiscard]] static double milliseconds(std::uint64_t ticks) noexcept;

    /// The present, in milliseconds.
    [[nodiscard]] double now() const noexcept;

    /// When the event happened, in milliseconds; the present when the event does not say.
    [[nodiscard]] double timestamp(const CGEvent& event) const noexcept;

  private:
    const Clock& clock_;
};

}  // namespace tessara
