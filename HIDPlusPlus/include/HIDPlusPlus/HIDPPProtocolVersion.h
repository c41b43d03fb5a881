#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace tessara {

/// The protocol version a device answers a ping with, ordered by major, then minor. Features and
/// their functions are those of version 2.0 and later; versions are shown and never decided by.
struct HIDPPProtocolVersion {
    std::uint8_t major = 0;
    std::uint8_t minor = 0;

    /// Such as "HID++ 4.2".
    std::string description() const;

    auto operator<=>(const HIDPPProtocolVersion&) const = default;
};

}  // namespace tessara
