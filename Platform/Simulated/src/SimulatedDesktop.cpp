#include "Platform/Simulated/SimulatedDesktop.h"

#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Simulated/SimulatedHardware.h"

namespace tessara {

SimulatedDesktop::SimulatedDesktop(Dispatcher& dispatcher)
    : displays_(std::make_shared<SimulatedDisplays>()),
      devices_(std::make_shared<SimulatedDevices>()),
      workspace_(std::make_shared<SimulatedWorkspace>()),
      shortcuts_(std::make_shared<SimulatedShortcuts>()),
      hardwareState_(std::make_shared<SimulatedInputState>()),
      sessionState_(std::make_shared<SimulatedInputState>()),
      permissions_(std::make_shared<SimulatedPermissions>([this] { disableTapsByUserInput(); })),
      taps_(std::make_shared<SimulatedEventTaps>(permissions_)),
      stream_(std::make_shared<SimulatedEventStream>(
          dispatcher.makeQueue("simulated.window-server", QualityOfService::userInteractive),
          SimulatedEventStreamParts{.taps = taps_,
                                    .hardwareState = hardwareState_,
                                    .sessionState = sessionState_,
                                    .displays = displays_,
                                    .workspace = workspace_})),
      eventServices_(std::make_shared<SimulatedEventServices>(
          dispatcher.clock(), permissions_, displays_, hardwareState_, sessionState_, stream_)),
      hardware_(std::make_shared<SimulatedHardware>(dispatcher.clock(), devices_, displays_,
                                                    hardwareState_, stream_)),
      keyboard_(std::make_unique<SimulatedKeyboard>(
          hardware_, devices_->attach(SimulatedDeviceDescription::keyboard()))) {}

SimulatedDesktop::~SimulatedDesktop() = default;

SimulatedPointingDevice& SimulatedDesktop::attachTargetMouse() {
    return attach(SimulatedDeviceDescription::targetMouse());
}

SimulatedPointingDevice& SimulatedDesktop::attachForeignMouse() {
    return attach(SimulatedDeviceDescription::foreignMouse());
}

SimulatedPointingDevice& SimulatedDesktop::attachTrackpad() {
    return attach(SimulatedDeviceDescription::trackpad());
}

SimulatedPointingDevice& SimulatedDesktop::attachMouseWithoutVendor() {
    return attach(SimulatedDeviceDescription::mouseWithoutVendor());
}

SimulatedPointingDevice& SimulatedDesktop::attach(const SimulatedDeviceDescription& description) {
    auto device =
        std::make_unique<SimulatedPointingDevice>(hardware_, devices_->attach(description));
    MutexLock lock(mutex_);
    pointingDevices_.push_back(std::move(device));
    return *pointingDevices_.back();
}

void SimulatedDesktop::send(const CGEvent& event) {
    stream_->enterFromDevice([event] { return event; });
}

void SimulatedDesktop::disableTapsByTimeout() {
    stream_->disableTaps(CGEventType::tapDisabledByTimeout);
}

void SimulatedDesktop::disableTapsByUserInput() {
    stream_->disableTaps(CGEventType::tapDisabledByUserInput);
}

void SimulatedDesktop::settle() {
    stream_->settle();
}

}  // namespace tessara
