#include "Platform/Linux/LinuxPlatform.h"

#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/LinuxEventServices.h"
#include "Platform/Linux/LinuxHIDEventSystem.h"
#include "Platform/Linux/SuspendMonitor.h"
#include "Platform/Linux/VirtualDevices.h"

namespace tessara {

/// In the order in which they need each other.
struct LinuxPlatform::Services {
    Services(Dispatcher& dispatcher, std::vector<InputDeviceMatch> mice)
        : queue(dispatcher.makeQueue("ai.tessara.platform", QualityOfService::utility)),
          suspend(queue),
          eventTaps(std::move(mice), output, keyboards, &suspend) {}

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

SuspendMonitor& LinuxPlatform::suspend() {
    return services_->suspend;
}

VirtualDevices& LinuxPlatform::output() {
    return *services_->output;
}

}  // namespace tessara
