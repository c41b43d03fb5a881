#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TessaraCore/RawValue.h"

namespace tessara {

/// Why the system took the tap out of the event stream.
enum class TapDisableReason : std::uint8_t {
    /// A callback took too long for the system's taste, or events were lost on their way to it.
    timeout,
    /// Something of the user's made the system do it, or the device behind the tap has gone.
    userInput
};

template <>
inline constexpr auto rawValues<TapDisableReason> =
    std::to_array<std::string_view>({"timeout", "userInput"});

/// How the tap's callbacks fared: what the program adds to the way of every event. Notices that the
/// tap was disabled are no callbacks. What the handler did with the events is not told here.
struct TapMetrics {
    /// Callbacks handled.
    std::int64_t events = 0;
    /// The longest of them, in nanoseconds.
    double maxCallbackNanos = 0;
    /// All of them together, in nanoseconds.
    double totalCallbackNanos = 0;
    /// Callbacks longer than the budget.
    std::int64_t budgetOverruns = 0;
    /// The longest of those, in its whole length and not by its excess, in nanoseconds.
    double worstOverrunNanos = 0;
    /// Notices that the system took the tap out for a timeout.
    std::int64_t disabledByTimeout = 0;
    /// Notices that it did so for user input.
    std::int64_t disabledByUserInput = 0;
    /// Times the tap was put back; as many as there were notices.
    std::int64_t reEnables = 0;

    /// What one callback took on average, in microseconds; 0 while there was none.
    [[nodiscard]] double meanCallbackMicros() const;
    /// How many times the longest callback fits into a second; infinite while there was none.
    [[nodiscard]] double watchdogHeadroomFactor() const;

    bool operator==(const TapMetrics&) const = default;
};

}  // namespace tessara
