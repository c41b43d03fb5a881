#include "Platform/Linux/LinuxPlatform.h"

#include <algorithm>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Linux/InputDevices.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/LinuxEventServices.h"
#include "Platform/Linux/LinuxHIDEventSystem.h"
#include "Platform/Linux/SuspendMonitor.h"
#include "Platform/Linux/Udev.h"
#include "Platform/Linux/VirtualDevices.h"

namespace tessara {

/// In the order in which they need each other.
struct LinuxPlatform::Services {
    Services(Dispatcher& dispatcher, std::vector<InputDeviceMatch> wanted)
        : mice(std::move(wanted)),
          queue(dispatcher.makeQueue("ai.tessara.platform", QualityOfService::utility)),
          suspend(queue),
          eventTaps(mice, output, keyboards, &suspend) {}

    const std::vector<InputDeviceMatch> mice;
    const std::shared_ptr<DispatchQueue> queue;
    SuspendMonitor suspend;
    const std::shared_ptr<KeyboardState> keyboards = std::make_shared<KeyboardState>();
    const std::shared_ptr<VirtualDevices> output = std::make_shared<VirtualDevices>();
    LinuxEventTapService eventTaps;
    LinuxEventServices events{output->mouse, output->keyboard, *keyboards};
    LinuxHIDEventSystem hidEvents;
};

LinuxPlatform::LinuxPlatform(Dispatcher& dispatcher, std::vector<InputDeviceMatch> mice)
    : services_(std::make_unique<Services>(dispatcher, std::move(mice))) {}

LinuxPlatform::~LinuxPlatform() = default;

EventTapService& LinuxPlatform::eventTaps() {
    return services_->eventTaps;
}

EventServices& LinuxPlatform::events() {
    return services_->events;
}

HIDEventSystem& LinuxPlatform::hidEvents() {
    return services_->hidEvents;
}

bool LinuxPlatform::kernelManagesWheel() const {
    const auto& mice = services_->mice;
    return std::ranges::any_of(inputDevices(Udev()), [&](const InputDevice& device) {
        const InputDeviceMatch numbers{.vendor = device.vendor, .product = device.product};
        return std::ranges::find(mice, numbers) != mice.end() &&
               tessara::kernelManagesWheel(device);
    });
}

SuspendMonitor& LinuxPlatform::suspend() {
    return services_->suspend;
}

VirtualDevices& LinuxPlatform::output() {
    return *services_->output;
}

}  // namespace tessara
