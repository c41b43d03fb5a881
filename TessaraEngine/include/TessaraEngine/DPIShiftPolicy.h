#pragma once

#include <cstdint>
#include <optional>

/// Tells a temporary resolution from the profile's own.
namespace tessara::DPIShiftPolicy {

/// The resolution that a macro's request puts in place of the profile's `baselineDPI`, or nothing
/// when the request is for the baseline itself: then no shift is in force.
[[nodiscard]] constexpr std::optional<std::int64_t> override(std::int64_t requestedDPI,
                                                             std::int64_t baselineDPI) {
    if (requestedDPI == baselineDPI) return std::nullopt;
    return requestedDPI;
}

}  // namespace tessara::DPIShiftPolicy
