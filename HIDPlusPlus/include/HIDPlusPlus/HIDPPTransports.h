#pragma once

#include <cstdint>
#include <string>

namespace tessara {

/// The ways in which a device can be connected, as it tells them itself; not the way in which it
/// is. Bits without a name are kept.
struct HIDPPTransports {
    static constexpr std::uint16_t bluetooth = 0x0001;
    static constexpr std::uint16_t bluetoothLE = 0x0002;
    /// The maker's own radio, by way of a receiver.
    static constexpr std::uint16_t eQuad = 0x0004;
    static constexpr std::uint16_t usb = 0x0008;

    /// The bits as read.
    std::uint16_t rawValue = 0;

    /// The words of the set bits joined by commas, "-" when no named bit is set.
    std::string description() const;

    bool operator==(const HIDPPTransports&) const = default;
};

}  // namespace tessara
