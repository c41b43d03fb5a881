#pragma once

#include <cstdint>

#include <linux/input.h>

namespace tessara {

/// By what the virtual devices of this program are known: to the user, who reads the name in lists
/// of devices, and to the program, which must never take its own output for input.
///
/// The numbers never change: users' own rules for devices go by them, and desktops remember
/// settings under them. They are of the bus of virtual devices, so that they cannot be those of
/// real hardware.
struct VirtualDeviceIdentity {
    const char* name = "";      ///< at most 79 bytes, as uinput takes them
    std::uint16_t product = 0;  ///< tells this program's devices apart

    static constexpr std::uint16_t bus = BUS_VIRTUAL;
    static constexpr std::uint16_t vendor = 0x7465;
    static constexpr std::uint16_t version = 1;
};

inline constexpr VirtualDeviceIdentity virtualMouseIdentity{.name = "Tessara Virtual Mouse",
                                                            .product = 0x0001};
inline constexpr VirtualDeviceIdentity virtualKeyboardIdentity{.name = "Tessara Virtual Keyboard",
                                                               .product = 0x0002};

/// Whether an input node with these numbers is a virtual device of this program, in this process or
/// in another. The version does not count: another release's devices are ours too.
[[nodiscard]] constexpr bool isOurs(const input_id& id) {
    return id.bustype == VirtualDeviceIdentity::bus && id.vendor == VirtualDeviceIdentity::vendor &&
           (id.product == virtualMouseIdentity.product ||
            id.product == virtualKeyboardIdentity.product);
}

}  // namespace tessara
