#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDEventSystem.h"

namespace tessara {

/// What a device of the simulated desktop says of itself; what is absent it does not say. Usages
/// are those of the USB HID usage tables.
struct SimulatedDeviceDescription {
    std::optional<std::int64_t> vendorID;
    std::optional<std::int64_t> productID;
    std::optional<std::string> product;
    std::optional<std::string> transport = "USB";
    std::optional<std::int64_t> primaryUsagePage = 1;  ///< Generic Desktop
    std::optional<std::int64_t> primaryUsage = 2;      ///< Mouse

    /// The mouse that the program is for.
    static SimulatedDeviceDescription targetMouse();
    /// A mouse that it is not for.
    static SimulatedDeviceDescription foreignMouse();
    /// A device that scrolls by pixels, and is not the program's business either.
    static SimulatedDeviceDescription trackpad();
    /// A mouse that names neither vendor nor product.
    static SimulatedDeviceDescription mouseWithoutVendor();
    /// The keyboard that every desktop has.
    static SimulatedDeviceDescription keyboard();
};

/// One input device as the event system of the simulated desktop has it. Its properties are those
/// of the description under the system's names, and whatever was set since. Once it is detached it
/// answers with nothing and takes nothing. All operations may be called from any thread.
class SimulatedHIDDevice final : public HIDService {
  public:
    /// Attached from the start.
    SimulatedHIDDevice(std::uint64_t id, const SimulatedDeviceDescription& description);

    /// The sender identifier of its events: never 0, and another one at each plug.
    [[nodiscard]] std::uint64_t id() const { return id_; }

    // Whether it is plugged in. It never comes back: a later plug is another device.
    [[nodiscard]] bool isAttached() const { return isAttached_.load(); }
    void markDetached() { isAttached_.store(false); }

    /// Makes `registryID` answer with `value`: a system that answers with no number, or with 0.
    void answerRegistryIDWith(HIDValue value);

    /// Gives the device a property, or takes it away with `std::monostate`.
    void give(const std::string& key, HIDValue value);

    [[nodiscard]] HIDValue registryID() const override;
    [[nodiscard]] HIDValue copyProperty(std::string_view key) const override;
    bool setProperty(std::string_view key, const HIDValue& value) override;

  private:
    const std::uint64_t id_;
    std::atomic<bool> isAttached_{true};
    mutable Mutex mutex_;
    HIDValue registryID_ TESSARA_GUARDED_BY(mutex_);
    std::map<std::string, HIDValue, std::less<>> properties_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
