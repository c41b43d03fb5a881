#include "Kernel/EngineSession.h"

#include <utility>

#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/HidrawTransport.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara::testing {

struct EngineSession::Parts {
    explicit Parts(Config config)
        : mainQueue(dispatcher.makeQueue("main", QualityOfService::userInteractive)),
          engine(std::make_shared<TessaraEngine>(std::move(config), options(), services())) {}

    TessaraEngine::Options options() {
        TessaraEngine::Options options;
        options.deviceMatches = {HIDPPDeviceMatch::g502X};
        options.poster =
            std::make_shared<CGEventPoster>(platform.events(), CGEventTapLocation::session);
        options.connectsToDevice = true;
        return options;
    }

    EnginePlatform services() {
        return {.dispatcher = dispatcher,
                .mainQueue = mainQueue,
                .eventTaps = platform.eventTaps(),
                .events = platform.events(),
                .cursor = nullptr,
                .hidEvents = platform.hidEvents(),
                .hidRunLoop = std::make_shared<HIDPPRunLoop>(dispatcher, hidTransport),
                .permissions = desktop.permissions(),
                .workspace = desktop.workspace(),
                .shortcuts = desktop.shortcuts()};
    }

    ThreadedDispatcher dispatcher;
    std::shared_ptr<DispatchQueue> mainQueue;
    HidrawTransport hidTransport{UHIDMouse::vendorID, UHIDMouse::productID};
    SimulatedDesktop desktop{dispatcher};
    LinuxPlatform platform{dispatcher,
                           {{.vendor = UHIDMouse::vendorID, .product = UHIDMouse::productID}}};
    std::shared_ptr<TessaraEngine> engine;
};

EngineSession::EngineSession(Config config) : parts_(std::make_unique<Parts>(std::move(config))) {
    run([](TessaraEngine& engine) { EXPECT_TRUE(engine.start().has_value()); });
}

EngineSession::~EngineSession() {
    run([](TessaraEngine& engine) { engine.stop(); });
}

void EngineSession::run(const std::function<void(TessaraEngine&)>& block) {
    parts_->mainQueue->post([this, &block] { block(*parts_->engine); });
    parts_->mainQueue->drain();
}

}  // namespace tessara::testing
