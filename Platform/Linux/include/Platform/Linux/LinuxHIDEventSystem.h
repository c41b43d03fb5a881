#pragma once

#include "Platform/HIDEventSystem.h"

namespace tessara {

/// The computer's input devices as udev lists them, each evdev node a service. The sender of an
/// event is the node that it was read from.
///
/// The program's own virtual devices are not among them. Pointer properties do not exist here, and
/// the call that would set them does not resolve. A service tells what its node was when it was
/// listed, by the keys "VendorID", "ProductID", "Product", "Transport", "PrimaryUsagePage" and
/// "PrimaryUsage", and nothing once the node has gone.
///
/// Any thread, except that listing reads files of /sys and is not for the tap's.
class LinuxHIDEventSystem final : public HIDEventSystem {
  public:
    [[nodiscard]] bool resolves(HIDSymbol symbol) const override;
    [[nodiscard]] std::optional<std::uint64_t> senderID(const CGEvent& event) const override;
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<HIDService>>> services() override;
};

}  // namespace tessara
