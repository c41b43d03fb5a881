#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <variant>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/RawValue.h"

namespace tessara {

/// Why an event's device could not be established.
enum class UnidentifiedReason : std::uint8_t {
    spiUnavailable,  ///< the system lacks a call that it takes
    noHIDEvent,      ///< no device stands behind the event
    unknownSender    ///< the device is in no table, or not yet
};

template <>
inline constexpr auto rawValues<UnidentifiedReason> =
    std::to_array<std::string_view>({"spiUnavailable", "noHIDEvent", "unknownSender"});

/// The event is from a device that the program reshapes.
struct TargetDevice {
    DeviceID deviceID;
    bool operator==(const TargetDevice&) const = default;
};

/// The event is from a known device that is none of the program's business.
struct ForeignDevice {
    DeviceID deviceID;
    bool operator==(const ForeignDevice&) const = default;
};

/// The event's device could not be established.
struct UnidentifiedDevice {
    UnidentifiedReason reason = UnidentifiedReason::spiUnavailable;
    bool operator==(const UnidentifiedDevice&) const = default;
};

/// Whose event it is.
using ScopeDecision = std::variant<TargetDevice, ForeignDevice, UnidentifiedDevice>;

}  // namespace tessara
