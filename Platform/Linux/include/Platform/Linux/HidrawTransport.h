#pragma once

#include <cstdint>

#include "Platform/HIDTransport.h"

namespace tessara {

/// The kernel's HID devices through their hidraw nodes, found and watched with libudev. What an
/// interface is for is read from its report descriptor, which needs no right to open the node. An
/// interface's registry id is the number that the kernel gives to each HID device it finds.
class HidrawTransport final : public HIDTransport {
  public:
    /// The ids are of the device whose nodes tell whether access is granted.
    HidrawTransport(std::int64_t vendorID, std::int64_t productID)
        : vendorID_(vendorID), productID_(productID) {}

    [[nodiscard]] std::vector<std::shared_ptr<HIDInterface>> interfaces(
        std::int64_t vendorID, std::int64_t productID) override;

    [[nodiscard]] std::unique_ptr<HIDHotplugWatch> watch(std::int64_t vendorID,
                                                         std::int64_t productID,
                                                         std::shared_ptr<DispatchQueue> queue,
                                                         HIDHotplugHandlers handlers) override;

    /// Granted when all nodes of the device may be opened, denied when one may not, unknown when
    /// the device is not there.
    [[nodiscard]] HIDListenEventAccess listenEventAccess() const override;

  private:
    const std::int64_t vendorID_;
    const std::int64_t productID_;
};

}  // namespace tessara
