#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TessaraCore/RawValue.h"

namespace tessara {

/// Why the system took the tap out of the event stream.
enum class TapDisableReason : std::uint8_t {
    timeout,   ///< a callback took too long for the system's taste
    userInput  ///< something of the user's made the system do it
};

template <>
inline constexpr auto rawValues<TapDisableReason> =
    std::to_array<std::string_view>({"timeout", "userInput"});

/// How the tap's callbacks fared. Disable notices are no callbacks.
struct TapMetrics {
    std::int64_t events = 0;  ///< callbacks
    double maxCallbackNanos = 0;
    double totalCallbackNanos = 0;
    std::int64_t budgetOverruns = 0;  ///< callbacks longer than the budget
    double worstOverrunNanos = 0;     ///< the longest of them, in its whole length
    std::int64_t disabledByTimeout = 0;
    std::int64_t disabledByUserInput = 0;
    std::int64_t reEnables = 0;

    /// 0 while there was no callback.
    [[nodiscard]] double meanCallbackMicros() const;
    /// How many times the longest callback fits into a second; infinite while there was none.
    [[nodiscard]] double watchdogHeadroomFactor() const;

    bool operator==(const TapMetrics&) const = default;
};

}  // namespace tessara
