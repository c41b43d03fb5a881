#pragma once

#include "Platform/HIDEventSystem.h"

namespace tessara {

/// The computer's input devices as udev lists them, each evdev node a service. The sender of an
/// event is the node that it was read from.
///
/// The program's own virtual devices are not among them. Pointer properties do not exist here, and
/// the call that would set them does not resolve.
class LinuxHIDEventSystem final : public HIDEventSystem {
  public:
    [[nodiscard]] bool resolves(HIDSymbol symbol) const override;
    [[nodiscard]] std::optional<std::uint64_t> senderID(const CGEvent& event) const override;
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<HIDService>>> services() override;
};

}  // namespace tessara
