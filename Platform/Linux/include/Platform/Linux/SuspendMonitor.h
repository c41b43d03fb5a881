#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "Platform/Dispatch/EventStream.h"

namespace tessara {

/// Tells a sleep of the computer from a change of its time of day, by the difference of two clocks
/// of which one stands still in a sleep.
class SleepDetector {
  public:
    /// Shorter gaps are no sleep: the two clocks are not read at the same moment.
    static constexpr std::chrono::milliseconds shortestSleep{100};

    /// `slept` is how long the computer has slept in all until now.
    explicit SleepDetector(std::chrono::nanoseconds slept) : known_(slept) {}

    /// How long it slept since the last answer; nothing when it did not.
    [[nodiscard]] std::optional<std::chrono::nanoseconds> note(std::chrono::nanoseconds slept);

  private:
    std::chrono::nanoseconds known_;
};

/// Hears when the computer wakes from a sleep of whatever kind: devices may have come and gone
/// unseen by then, and what they were told may be forgotten. Says nothing of a sleep to come.
///
/// It asks the kernel alone, so that it does not matter who put the computer to sleep: a timer on
/// the time of day is cancelled when that clock jumps, as it does at each waking.
class SuspendMonitor {
  public:
    /// Waits on `queue`, one of a `ThreadedDispatcher`. Where the kernel has no such timer nothing
    /// is ever heard. Any thread.
    explicit SuspendMonitor(std::shared_ptr<DispatchQueue> queue);
    ~SuspendMonitor();

    SuspendMonitor(const SuspendMonitor&) = delete;
    SuspendMonitor& operator=(const SuspendMonitor&) = delete;

    /// Each waking, with how long the computer slept. Any thread.
    [[nodiscard]] EventStream<std::chrono::nanoseconds>& wakings();

  private:
    class Watch;
    const std::shared_ptr<Watch> watch_;
};

}  // namespace tessara
