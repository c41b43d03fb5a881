#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>

#include "DPISink.h"
#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/Awaitables.h"
#include "TessaraEngine/DPIShiftPolicy.h"
#include "TessaraEngine/InputRouter.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/PointerHardwareTuning.h"
#include "TessaraEngine/ProfileWatcher.h"
#include "TessaraEngine/TessaraEngine.h"

/// The engine's device side: the mouse's own settings, and the pointer figures of the system.
namespace tessara {

std::function<void(std::function<void(TessaraEngine&)>)> TessaraEngine::onMain() {
    return [weakSelf = weak_from_this(),
            queue = platform_.mainQueue](std::function<void(TessaraEngine&)> block) {
        queue->post([weakSelf, block = std::move(block)] {
            if (auto self = weakSelf.lock()) block(*self);
        });
    };
}

DesiredDeviceSettings TessaraEngine::desiredSettings(const Profile& profile) const {
    return {.dpi = profile.pointer.dpi,
            .reportRateHertz = options_.reportRateHertz,
            .highResolutionWheel = options_.highResolutionWheel};
}

void TessaraEngine::startDeviceIfNeeded() {
    const auto frontmost = profileWatcher_ ? profileWatcher_->frontmostBundleID() : std::nullopt;
    const DesiredDeviceSettings desired = desiredSettings(config_.activeProfile(frontmost));
    if (options_.hidControl) {
        useApplier(options_.hidControl, desired);
        settingsApplier_->applyNow();
    } else if (options_.connectsToDevice) {
        connectToDevice(desired);
    }
}

void TessaraEngine::useApplier(std::shared_ptr<HIDPPControlling> control,
                               const DesiredDeviceSettings& desired) {
    settingsApplier_ =
        std::make_shared<SettingsApplier>(std::move(control), desired, platform_.dispatcher);

    // Runs on the macro queue, which the engine brings to rest before the pipelines go.
    dpiSink_->setHandler([applier = settingsApplier_, this](std::int64_t dpi) {
        applier->setDPIOverride(DPIShiftPolicy::override(dpi, buttonPipeline_.baseDPI()));
    });

    settingsApplier_->onDeviceDPIChange([onMain = onMain()](std::optional<std::int64_t> dpi) {
        onMain([dpi](TessaraEngine& self) {
            if (dpi) self.lastDeviceReportedDPI_ = dpi;
            self.tunePointer(
                [dpi](PointerHardwareTuning& tuning) { tuning.deviceDPIReported(dpi); });
        });
    });
    settingsApplier_->onDeviceReady([onMain = onMain()] {
        onMain([](TessaraEngine& self) {
            self.tunePointer([](PointerHardwareTuning& tuning) { tuning.deviceBecameReady(); });
        });
    });
    settingsApplier_->onStateChange([onMain = onMain()](const SettingsApplyState& state) {
        onMain([state](TessaraEngine& self) {
            self.changeStatus([&](EngineStatus& status) { status.deviceSettings = state; });
        });
    });
}

void TessaraEngine::connectToDevice(const DesiredDeviceSettings& desired) {
    const HIDPPDeviceMatch match =
        options_.deviceMatches.empty() ? HIDPPDeviceMatch::g502X : options_.deviceMatches.front();
    hidDevice_ = std::make_shared<HIDPPDevice>(match, platform_.hidRunLoop);
    useApplier(std::make_shared<LiveHIDPPControl>(hidDevice_), desired);

    // The stream stands before the connecting, so that no event of the connection is lost.
    hidEvents_ = hidDevice_->makeEventStream(
        platform_.mainQueue, [weakSelf = weak_from_this()](const HIDPPEvent& event) {
            if (auto self = weakSelf.lock()) self->handleOwnDeviceEvent(event);
        });
    auto connect = [](std::shared_ptr<HIDPPDevice> device,
                      std::weak_ptr<TessaraEngine> weakSelf) -> asio::awaitable<void> {
        const auto connected = co_await device->connect();
        if (connected) co_return;
        // An engine that has stopped meanwhile ended the attempt itself.
        const auto self = weakSelf.lock();
        if (self && self->hidDevice_ == device) self->handleHIDError(connected.error());
    };
    asio::co_spawn(platform_.mainQueue->executor(), connect(hidDevice_, weak_from_this()),
                   RethrowException());
}

void TessaraEngine::disconnectFromDevice() {
    hidEvents_.cancel();
    if (auto device = std::exchange(hidDevice_, nullptr)) {
        auto disconnect = [](std::shared_ptr<HIDPPDevice> leaving) -> asio::awaitable<void> {
            co_await leaving->disconnect();
        };
        asio::co_spawn(platform_.mainQueue->executor(), disconnect(std::move(device)),
                       RethrowException());
    }
}

void TessaraEngine::handleOwnDeviceEvent(const HIDPPEvent& event) {
    refreshScope(event);
    settingsApplier_->handle(event);
    changeStatus([&](EngineStatus& status) {
        if (const auto* change = std::get_if<HIDPPEvent::StateChanged>(&event.value)) {
            status.hidConnection = change->state;
        }
        status.targetDeviceAttached = scope_.isTargetAttached();
    });
    if (event.is<HIDPPEvent::DeviceRemoved>()) router_->resetAll();
}

void TessaraEngine::handleDeviceEvent(const HIDPPEvent& event) {
    if (event.is<HIDPPEvent::DeviceRemoved>()) {
        router_->resetAll();
        macroExecutor_->drain();
    }
    refreshScope(event);
    if (const auto* change = std::get_if<HIDPPEvent::StateChanged>(&event.value)) {
        changeStatus([&](EngineStatus& status) { status.hidConnection = change->state; });
    }
    if (settingsApplier_) settingsApplier_->handle(event);
}

void TessaraEngine::refreshScope(const HIDPPEvent& event) {
    if (event.is<HIDPPEvent::DeviceAttached>() || event.is<HIDPPEvent::DeviceReady>() ||
        event.is<HIDPPEvent::DeviceRemoved>()) {
        scope_.refresh(/*force=*/true);
    }
}

void TessaraEngine::handleHIDError(const HIDPPError& error) {
    changeStatus([&](EngineStatus& status) {
        if (error.is<HIDPPError::NotPermitted>()) {
            status.deviceSettings = SettingsNotPermitted{};
        } else {
            status.lastError = error.description();
        }
    });
}

void TessaraEngine::setPausedByUser(bool isPaused) {
    if (isPaused == options_.isPausedByUser) return;
    options_.isPausedByUser = isPaused;
    syncPointerTuning();
}

void TessaraEngine::setPointerTuningEnabled(bool isEnabled) {
    tunePointer([isEnabled](PointerHardwareTuning& tuning) { tuning.setEnabled(isEnabled); });
    syncPointerTuning();
}

void TessaraEngine::syncPointerTuning() {
    const bool isPermitted = !isStopped_ && !options_.isPausedByUser && config_.isEnabled;
    tunePointer([&](PointerHardwareTuning& tuning) {
        tuning.request({.isPermitted = isPermitted, .deviceDPI = lastDeviceReportedDPI_});
    });
}

void TessaraEngine::tunePointer(const std::function<void(PointerHardwareTuning&)>& change) {
    if (!pointerTuning_) return;
    change(*pointerTuning_);
    changeStatus([&](EngineStatus& status) { status.pointerTuning = pointerTuning_->status(); });
}

}  // namespace tessara
