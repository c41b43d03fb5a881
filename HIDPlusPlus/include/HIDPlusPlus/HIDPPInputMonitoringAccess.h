#pragma once

#include <cstdint>
#include <string_view>

namespace tessara {

/// Whether the user lets this process open the mouse. A wish to know only: what counts is whether
/// opening it succeeds.
enum class HIDPPInputMonitoringAccess : std::uint8_t {
    granted,
    denied,
    /// Neither granted nor denied: nothing was ever asked.
    unknown,
};

/// The text for the user.
std::string_view description(HIDPPInputMonitoringAccess access);

}  // namespace tessara
