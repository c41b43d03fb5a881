#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tessara {

/// What the kernel's name of a HID device says, as in "0003:046D:C099.0007". The names of parents
/// stand in the paths of their children, so a node's path tells all this also when the device is
/// gone.
struct HIDDeviceName {
    std::uint32_t bus = 0;
    std::uint32_t vendorID = 0;
    std::uint32_t productID = 0;
    /// Counts the HID devices since the system's start, from 1: no two plugs share one.
    std::uint32_t instance = 0;

    /// The name of the nearest HID device on the way up a path in /sys; none when there is none.
    [[nodiscard]] static std::optional<HIDDeviceName> inPath(std::string_view path);

    bool operator==(const HIDDeviceName&) const = default;
};

/// A USB device's place as a number, from its name in /sys: of "1-4.2" bus 1 and ports 4 and 2, in
/// a byte each from the most significant one of seven: 0x01040200000000. None for other names.
[[nodiscard]] std::optional<std::int64_t> locationOfUSBDevice(std::string_view name);

}  // namespace tessara
