#include "Platform/Linux/LinuxHIDEventSystem.h"

#include <linux/input.h>
#include <unistd.h>

#include "Platform/Linux/InputDevices.h"
#include "Platform/Linux/Udev.h"

namespace tessara {
namespace {

constexpr std::int64_t genericDesktopPage = 1;
constexpr std::int64_t mouseUsage = 2;
constexpr std::int64_t keyboardUsage = 6;

HIDValue transport(std::uint16_t bus) {
    switch (bus) {
        case BUS_USB:
            return "USB";
        case BUS_BLUETOOTH:
            return "Bluetooth";
        case BUS_VIRTUAL:
            return "Virtual";
        case BUS_I8042:
            return "PS/2";
        case BUS_I2C:
            return "I2C";
        default:
            return {};
    }
}

class InputService final : public HIDService {
  public:
    explicit InputService(InputDevice device) : device_(std::move(device)) {}

    [[nodiscard]] HIDValue registryID() const override {
        if (hasGone()) return {};
        return static_cast<std::int64_t>(device_.id);
    }

    [[nodiscard]] HIDValue copyProperty(std::string_view key) const override {
        if (hasGone()) return {};
        if (key == "VendorID") return std::int64_t{device_.vendor};
        if (key == "ProductID") return std::int64_t{device_.product};
        if (key == "Product") return device_.name;
        if (key == "Transport") return transport(device_.bus);
        if (device_.role == InputRole::other) return {};
        if (key == "PrimaryUsagePage") return genericDesktopPage;
        if (key == "PrimaryUsage")
            return device_.role == InputRole::pointer ? mouseUsage : keyboardUsage;
        return {};
    }

    bool setProperty(std::string_view /*key*/, const HIDValue& /*value*/) override { return false; }

  private:
    [[nodiscard]] bool hasGone() const { return ::access(device_.sysPath.c_str(), F_OK) != 0; }

    const InputDevice device_;
};

}  // namespace

bool LinuxHIDEventSystem::resolves(HIDSymbol symbol) const {
    return symbol != HIDSymbol::ioHIDServiceClientSetProperty;
}

std::optional<std::uint64_t> LinuxHIDEventSystem::senderID(const CGEvent& event) const {
    return event.hidEventReference;
}

std::optional<std::vector<std::shared_ptr<HIDService>>> LinuxHIDEventSystem::services() {
    const Udev udev;
    std::vector<std::shared_ptr<HIDService>> services;
    for (InputDevice& device : inputDevices(udev)) {
        if (!device.isOurs) services.push_back(std::make_shared<InputService>(std::move(device)));
    }
    return services;
}

}  // namespace tessara
