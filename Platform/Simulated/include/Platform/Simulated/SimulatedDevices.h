#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDEventSystem.h"
#include "Platform/Simulated/SimulatedHIDDevice.h"
#include "Platform/Simulated/SimulatedRefusal.h"

namespace tessara {

/// By what an event of the simulated desktop names the device that sent it.
enum class SenderReporting {
    hidEvent,   ///< every event has a HID event behind it
    fieldOnly,  ///< none has; button and drag events name the sender in field 87
    none,       ///< nothing names it
};

/// The input devices of the simulated desktop and the private calls that tell of them. All
/// operations may be called from any thread; what a script changes holds from the next call on.
class SimulatedDevices final : public HIDEventSystem {
  public:
    SimulatedDevices();

    /// Attaches a device under an identifier of its own, behind the present ones.
    [[nodiscard]] std::shared_ptr<SimulatedHIDDevice> attach(
        const SimulatedDeviceDescription& description);

    /// Takes the device out of the list.
    void detach(SimulatedHIDDevice& device);

    /// The devices that are attached, in the order of their attachment.
    [[nodiscard]] std::vector<std::shared_ptr<SimulatedHIDDevice>> attached() const;

    /// Makes the system one that lacks the call, or one that has it; all are there at first.
    void hide(HIDSymbol symbol);
    void reveal(HIDSymbol symbol);

    /// How the events to come name their sender.
    /// By their HID events at first.
    void reportSendersBy(SenderReporting reporting);
    [[nodiscard]] SenderReporting senderReporting() const;

    /// Makes the next `count` enumerations give no list.
    void refuseEnumerations(std::int64_t count = SimulatedRefusal::always);

    /// Makes enumerations give an empty list, as a system does that is not ready, or no longer.
    void enumerateNothing(bool isEmpty = true);

    /// Calls `hook` in the midst of the next enumeration, on its thread: what happens then, happens
    /// while the list is under way.
    void duringNextEnumeration(std::function<void()> hook);

    /// How often the services were enumerated, refusals included.
    [[nodiscard]] std::int64_t enumerationCount() const;

    [[nodiscard]] bool resolves(HIDSymbol symbol) const override;
    [[nodiscard]] std::optional<std::uint64_t> senderID(const CGEvent& event) const override;
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<HIDService>>> services() override;

  private:
    static std::uint32_t bit(HIDSymbol symbol);

    std::atomic<std::uint32_t> hiddenSymbols_{0};
    std::atomic<SenderReporting> senderReporting_{SenderReporting::hidEvent};
    SimulatedRefusal enumerations_;
    std::atomic<bool> enumeratesNothing_{false};
    std::atomic<std::int64_t> enumerationCount_{0};
    mutable Mutex mutex_;
    std::uint64_t lastID_ TESSARA_GUARDED_BY(mutex_);
    std::vector<std::shared_ptr<SimulatedHIDDevice>> attached_ TESSARA_GUARDED_BY(mutex_);
    std::function<void()> duringNextEnumeration_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
