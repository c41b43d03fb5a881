#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"

namespace tessara {

class SimulatedHIDInterface;
struct SimulatedHIDConditions;

/// One stay of a mouse in its socket: where its reports go as long as it lasts. Any thread.
class SimulatedHIDPlug : public std::enable_shared_from_this<SimulatedHIDPlug> {
  public:
    /// Pointer, keyboard and vendor interface, in the order in which they are found.
    static constexpr std::size_t interfaceCount = 3;

    /// The interfaces have registry ids in a row from `firstRegistryID` on.
    SimulatedHIDPlug(SimulatedMouse& mouse, std::uint64_t firstRegistryID, bool stripsReportIDs)
        : mouse_(mouse), firstRegistryID_(firstRegistryID), stripsReportIDs_(stripsReportIDs) {}

    [[nodiscard]] SimulatedMouse& mouse() const { return mouse_; }
    [[nodiscard]] std::uint64_t registryID(std::size_t index) const {
        return firstRegistryID_ + index;
    }
    [[nodiscard]] bool isGone() const { return isGone_; }
    [[nodiscard]] bool stripsReportIDs() const { return stripsReportIDs_; }

    /// Ends it: what is on its way to a listener is lost.
    void pull();

    /// An opener's view of each interface.
    [[nodiscard]] std::array<std::shared_ptr<HIDInterface>, interfaceCount> interfaces(
        const std::shared_ptr<SimulatedHIDConditions>& conditions);

    /// Hears the reports of the vendor interface, once each, until it is gone.
    void addListener(const std::shared_ptr<SimulatedHIDInterface>& listener);

    /// Sends a report of the mouse to all listeners, to arrive after `delay`.
    void deliver(const SimulatedMouse::Bytes& report, std::chrono::nanoseconds delay);

  private:
    SimulatedMouse& mouse_;
    const std::uint64_t firstRegistryID_;
    const bool stripsReportIDs_;
    std::atomic<bool> isGone_{false};
    Mutex mutex_;
    std::vector<std::weak_ptr<SimulatedHIDInterface>> listeners_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
