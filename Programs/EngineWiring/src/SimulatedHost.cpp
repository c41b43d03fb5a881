#include "EngineWiring/SimulatedHost.h"

#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

#include "TessaraEngine/PointerPropertyBackend.h"

namespace tessara {

SimulatedHost::SimulatedHost(Dispatcher& on)
    : SimulatedHost(on, on.makeQueue("ai.tessara.main", QualityOfService::userInteractive)) {}

SimulatedHost::SimulatedHost(Dispatcher& on, std::shared_ptr<DispatchQueue> main)
    : dispatcher(on),
      mainQueue(std::move(main)),
      desktop(on),
      hidRunLoop(std::make_shared<HIDPPRunLoop>(on, hidTransport)) {}

EnginePlatform SimulatedHost::enginePlatform() {
    return {.dispatcher = dispatcher,
            .mainQueue = mainQueue,
            .eventTaps = desktop.taps(),
            .events = desktop.eventServices(),
            .cursor = &desktop.displays(),
            .hidEvents = desktop.devices(),
            .hidRunLoop = hidRunLoop,
            .permissions = desktop.permissions(),
            .workspace = desktop.workspace(),
            .shortcuts = desktop.shortcuts()};
}

void SimulatedHost::awaitEndOfConnections() const {
    while (hidRunLoop.use_count() > 1)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

SimulatedPointingDevice& SimulatedHost::plugInMouse() {
    constexpr std::int64_t fixedOne = 65536;
    mouse = &desktop.attachTargetMouse();
    // What a system believes of a mouse that it knows nothing about.
    mouse->hid().give(PointerPropertyKey::resolution, 400 * fixedOne);
    mouse->hid().give(PointerPropertyKey::mouseAcceleration, fixedOne / 2);
    hidTransport.plug(firmware);
    return *mouse;
}

void SimulatedHost::unplugMouse() {
    if (hidTransport.isPlugged(firmware)) hidTransport.unplug(firmware);
    std::exchange(mouse, nullptr)->detach();
}

}  // namespace tessara
