#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tessara {

/// The vendor and product id by which a mouse is recognised. Says nothing about which of the
/// mouse's several HID interfaces is meant.
struct HIDPPDeviceMatch {
    /// The mouse this program is made for.
    static const HIDPPDeviceMatch g502X;

    std::int64_t vendorID = 0;
    std::int64_t productID = 0;

    /// Both ids in hexadecimal, such as "046D:C099".
    std::string description() const;

    bool operator==(const HIDPPDeviceMatch&) const = default;
};

inline constexpr HIDPPDeviceMatch HIDPPDeviceMatch::g502X{0x046D, 0xC099};

}  // namespace tessara

template <>
struct std::hash<tessara::HIDPPDeviceMatch> {
    std::size_t operator()(const tessara::HIDPPDeviceMatch& match) const noexcept {
        return std::hash<std::int64_t>{}(match.vendorID * 0x10000 + match.productID);
    }
};
