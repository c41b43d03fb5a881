#pragma once

#include <cstdint>

namespace tessara {

/// The ids of the mouse that the program is for. Its input device and its HID interfaces both show
/// them, as on a real computer.
inline constexpr std::int64_t targetVendorID = 0x046D;
inline constexpr std::int64_t targetProductID = 0xC099;

}  // namespace tessara
