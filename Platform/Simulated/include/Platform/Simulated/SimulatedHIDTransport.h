#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDTransport.h"
#include "Platform/Simulated/SimulatedRefusal.h"

namespace tessara {

class SimulatedMouse;

/// The HID side of the simulated computer: mice are plugged in and out, and each plug shows the
/// several interfaces that a real gaming mouse has, one of them with the vendor's collection.
///
/// Reports take their way through the queue of whoever listens, so that in virtual time a reply
/// comes at the moment of its request, and after the queue's turn. All operations may be called
/// from any thread.
class SimulatedHIDTransport final : public HIDTransport {
  public:
    SimulatedHIDTransport();
    ~SimulatedHIDTransport() override;

    // What a hand does.

    /// Plugs the mouse in: it gets its power, new registry ids, and is announced. One that is
    /// plugged in stays as it is. The mouse outlives the transport.
    void plug(SimulatedMouse& mouse);
    /// Pulls the plug. Reports on their way are lost.
    void unplug(SimulatedMouse& mouse);
    [[nodiscard]] bool isPlugged(const SimulatedMouse& mouse) const;

    // What a system does.

    /// Leaves the report id in as the first byte of input reports, or strips it, from the next
    /// plug on. It is left in at first.
    void stripReportIDs(bool strips);
    /// The next opens meet an interface that is not ready yet (`IOReturn::exclusiveAccess`).
    void refuseOpens(std::int64_t count = SimulatedRefusal::always);
    /// The next writes are not taken (`IOReturn::timeout`).
    void refuseWrites(std::int64_t count = SimulatedRefusal::always);
    /// Makes the writes that come from now on wait, as on a device that is slow to take them, until
    /// they are released. On real threads only: in virtual time the one thread that there is would
    /// wait for itself.
    void holdWrites();
    /// Lets the writes that wait, and all later ones, go on: to the mouse if it is still there.
    void releaseWrites();
    /// Writes that wait now.
    [[nodiscard]] std::int64_t heldWriteCount() const;
    /// Without it interfaces cannot be opened. Granted at first.
    void setListenEventAccess(HIDListenEventAccess access);

    /// Interfaces that are open now: what a leak would show in.
    [[nodiscard]] std::int64_t openInterfaceCount() const;

    [[nodiscard]] std::vector<std::shared_ptr<HIDInterface>> interfaces(
        std::int64_t vendorID, std::int64_t productID) override;
    [[nodiscard]] std::unique_ptr<HIDHotplugWatch> watch(std::int64_t vendorID,
                                                         std::int64_t productID,
                                                         std::shared_ptr<DispatchQueue> queue,
                                                         HIDHotplugHandlers handlers) override;
    [[nodiscard]] HIDListenEventAccess listenEventAccess() const override;

  private:
    class Watch;
    struct System;

    const std::shared_ptr<System> system_;
};

}  // namespace tessara
