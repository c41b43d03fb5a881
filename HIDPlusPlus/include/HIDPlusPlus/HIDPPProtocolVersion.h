#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace tessara {

/// The protocol version a device answers a ping with, ordered by major, then minor.
struct HIDPPProtocolVersion {
    std::uint8_t major = 0;
    std::uint8_t minor = 0;

    /// Such as "HID++ 4.2".
    std::string description() const;

    auto operator<=>(const HIDPPProtocolVersion&) const = default;
};

}  // namespace tessara
