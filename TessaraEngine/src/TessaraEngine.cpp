#include "TessaraEngine/TessaraEngine.h"

#include <algorithm>
#include <utility>

#include "DPISink.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/EventTaps.h"
#include "Platform/WorkspaceService.h"
#include "TessaraEngine/CGPointerCursor.h"
#include "TessaraEngine/EngineSPIDiagnostics.h"
#include "TessaraEngine/InputRouter.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/PointerHardwareTuning.h"
#include "TessaraEngine/ProfileWatcher.h"
#include "TessaraEngine/SystemSideEffects.h"

namespace tessara {
namespace {

std::shared_ptr<MacroExecutor> makeMacroExecutor(const TessaraEngine::Options& options,
                                                 const EnginePlatform& platform,
                                                 std::shared_ptr<DPISink> sink) {
    auto sideEffects = options.sideEffects;
    if (!sideEffects) {
        sideEffects = std::make_shared<SystemSideEffects>(
            [sink = std::move(sink)](std::int64_t dpi) { (*sink)(dpi); }, options.allowsAppLaunch,
            options.allowsShortcuts, platform.workspace, platform.shortcuts);
    }
    return std::make_shared<MacroExecutor>(options.poster, std::move(sideEffects),
                                           platform.dispatcher);
}

std::unique_ptr<PointerCursorMoving> makePointerCursor(const TessaraEngine::Options& options,
                                                       const EnginePlatform& platform) {
    if (!options.repositionsCursor || !platform.cursor) return nullptr;
    return std::make_unique<CGPointerCursor>(platform.events, *platform.cursor);
}

PermissionState currentPermissions(const EnginePlatform& platform) {
    return PermissionState::current(platform.permissions, platform.hidRunLoop->transport());
}

}  // namespace

TessaraEngine::TessaraEngine(Config config, Options options, const EnginePlatform& platform,
                             PointerHardwareTuning* pointerTuning)
    : TessaraEngine(config.activeProfile(std::nullopt), std::move(config), std::move(options),
                    platform, pointerTuning) {}

TessaraEngine::TessaraEngine(const Profile& profile, Config&& config, Options&& options,
                             const EnginePlatform& platform, PointerHardwareTuning* pointerTuning)
    : platform_(platform),
      scope_(options.deviceMatches, platform.hidEvents, platform.dispatcher),
      scrollPipeline_(profile.scroll, options.poster, platform.dispatcher),
      pointerPipeline_(profile.pointer, options.repositionsCursor),
      dpiSink_(std::make_shared<DPISink>()),
      macroExecutor_(makeMacroExecutor(options, platform, dpiSink_)),
      buttonPipeline_(profile.makeRouter(), macroExecutor_),
      router_(std::make_unique<InputRouter>(scope_, scrollPipeline_, buttonPipeline_,
                                            pointerPipeline_, makePointerCursor(options, platform),
                                            platform.dispatcher.clock())),
      options_(std::move(options)),
      config_(std::move(config)),
      pointerTuning_(pointerTuning) {
    status_.activeProfileID = profile.id;
    status_.activeProfileName = profile.name;
    status_.permissions = currentPermissions(platform_);
    status_.missingSPISymbols = EngineSPIDiagnostics::missingSymbols(platform_.hidEvents);
    if (pointerTuning_) pointerTuning_->setDeviceMatches(options_.deviceMatches);
    syncPointerTuning();
}

TessaraEngine::~TessaraEngine() {
    // Also an engine that nobody stopped leaves nothing held.
    tapController_.reset();
    router_->resetAll();
    // What is still to be posted refers to the pipelines and to the platform, which may go next.
    macroExecutor_->drain();
    scrollPipeline_.drain();
    dpiSink_->setHandler({});
}

std::expected<void, EventTapController::StartError> TessaraEngine::start() {
    if (tapController_) return {};
    isStopped_ = false;
    refreshPermissions();
    changeStatus([&](EngineStatus& status) {
        status.missingSPISymbols = EngineSPIDiagnostics::missingSymbols(platform_.hidEvents);
    });
    if (!config_.isEnabled) {
        changeStatus([](EngineStatus& status) { status.lastError = "configuration is disabled"; });
        return {};
    }
    scope_.refresh(/*force=*/true);

    profileWatcher_ = makeWatcher();
    profileWatcher_->start();
    // The watcher tells only of a profile other than the document's for no application, while the
    // pipelines may still have one of an earlier run or of an earlier document.
    const Profile profile = profileWatcher_->currentProfile();
    assignSettings(profile);
    changeStatus([&](EngineStatus& status) {
        status.activeProfileID = profile.id;
        status.activeProfileName = profile.name;
    });

    const std::uint64_t mask = requiredTapMask();
    auto tap = makeTapController(mask);
    if (auto started = tap->start(); !started) return started;
    tapController_ = std::move(tap);
    installedTapMask_ = mask;
    startDeviceIfNeeded();
    syncPointerTuning();

    changeStatus([&](EngineStatus& status) {
        status.isRunning = true;
        status.isTapEnabled = tapController_->isTapEnabled();
        status.frontmostBundleID = profileWatcher_->frontmostBundleID();
    });
    refreshMetrics();
    return {};
}

std::shared_ptr<ProfileWatcher> TessaraEngine::makeWatcher() {
    ++watchersMade_;
    auto handler = [weakSelf = weak_from_this(), queue = platform_.mainQueue,
                    number = watchersMade_](const Profile& profile,
                                            const std::optional<std::string>& bundleID,
                                            const ProfileResolution&) {
        queue->post([weakSelf, number, profile, bundleID] {
            const auto self = weakSelf.lock();
            if (!self) return;
            // A choice on its way is void once another watcher has made one of its own.
            if (self->profileWatcher_ && number != self->watchersMade_) return;
            self->applyProfile(profile, bundleID);
        });
    };
    return std::make_shared<ProfileWatcher>(config_, platform_.workspace, platform_.mainQueue,
                                            std::move(handler));
}

std::unique_ptr<EventTapController> TessaraEngine::makeTapController(std::uint64_t mask) {
    EventTapController::Configuration configuration = options_.tap;
    configuration.eventsOfInterest = mask;
    // The controller's thread is at rest before the router goes, so a reference will do on it.
    InputRouter& router = *router_;
    auto onDisabled = [&router, weakSelf = weak_from_this(),
                       queue = platform_.mainQueue](TapDisableReason reason) {
        router.resetAll();
        queue->post([weakSelf, reason] {
            if (auto self = weakSelf.lock()) self->handleTapDisabled(reason);
        });
    };
    auto handler = [&router](CGEventType type, CGEvent& event) {
        return router.route(type, event);
    };
    return std::make_unique<EventTapController>(configuration, platform_.eventTaps,
                                                platform_.dispatcher, std::move(onDisabled),
                                                std::move(handler));
}

std::uint64_t TessaraEngine::requiredTapMask() const {
    if (options_.tap.eventsOfInterest != EventTapController::defaultEventMask) {
        return options_.tap.eventsOfInterest;
    }
    // Motion is by far the most frequent event: it is not tapped unless some profile needs it.
    const bool needsMotion =
        std::ranges::any_of(config_.profiles, [](const Profile& p) { return p.pointer.isEnabled; });
    return needsMotion ? EventTapController::defaultEventMask
                       : EventTapController::scrollAndButtonEventMask;
}

void TessaraEngine::stop() {
    isStopped_ = true;
    tunePointer([this](PointerHardwareTuning& tuning) {
        tuning.request({.isPermitted = false, .deviceDPI = lastDeviceReportedDPI_});
        tuning.restore(PointerTuningRestoreReason::engineStopped);
    });
    // The tap goes first, so that no new work comes in; what is held is let go before the rest.
    if (tapController_) tapController_->stop();
    tapController_.reset();
    installedTapMask_.reset();
    if (profileWatcher_) profileWatcher_->stop();
    profileWatcher_.reset();

    router_->resetAll();
    macroExecutor_->drain();
    macroExecutor_->reset({});
    macroExecutor_->drain();
    disconnectFromDevice();

    changeStatus([](EngineStatus& status) {
        status.isRunning = false;
        status.isTapEnabled = false;
    });
    refreshMetrics();
}

void TessaraEngine::update(Config config) {
    config_ = std::move(config);
    if (profileWatcher_) profileWatcher_->update(config_);

    if (!config_.isEnabled) {
        if (tapController_) stop();
        return;
    }
    if (!tapController_ && !status_.isRunning) {
        static_cast<void>(start());
    } else if (installedTapMask_ && installedTapMask_ != requiredTapMask()) {
        stop();
        static_cast<void>(start());
    } else if (!profileWatcher_) {
        applyProfile(config_.activeProfile(std::nullopt), std::nullopt);
    }
    refreshMetrics();
}

void TessaraEngine::applyProfile(const Profile& profile,
                                 const std::optional<std::string>& bundleID) {
    router_->resetAll();
    macroExecutor_->drain();

    auto assign = [this, profile] { assignSettings(profile); };
    // On the tap thread it is one unit between two events: no event sees half a profile.
    if (!tapController_ || !tapController_->perform(assign)) assign();

    changeStatus([&](EngineStatus& status) {
        status.activeProfileID = profile.id;
        status.activeProfileName = profile.name;
        status.frontmostBundleID = bundleID;
    });
    if (settingsApplier_) settingsApplier_->update(desiredSettings(profile));
    syncPointerTuning();
}

void TessaraEngine::assignSettings(const Profile& profile) {
    scrollPipeline_.setSettings(profile.scroll);
    buttonPipeline_.setBindings(profile.buttons);
    buttonPipeline_.setBaseDPI(profile.pointer.dpi);
    pointerPipeline_.setSettings(profile.pointer);
}

void TessaraEngine::activateProfile(const std::optional<std::string>& bundleID) {
    if (profileWatcher_) {
        profileWatcher_->activate(bundleID, /*force=*/true);
    } else {
        applyProfile(config_.activeProfile(bundleID), bundleID);
    }
}

void TessaraEngine::handleTapDisabled(TapDisableReason reason) {
    changeStatus([&](EngineStatus& status) {
        status.lastTapDisableReason = reason;
        status.isTapEnabled = tapController_ && tapController_->isTapEnabled();
    });
    refreshMetrics();
}

void TessaraEngine::refreshPermissions() {
    changeStatus([&](EngineStatus& status) { status.permissions = currentPermissions(platform_); });
}

void TessaraEngine::refreshMetrics() {
    changeStatus([&](EngineStatus& status) {
        status.tap = tapController_ ? tapController_->snapshotMetrics() : TapMetrics{};
        status.scope = scope_.snapshotCounters();
        status.scroll = scrollPipeline_.snapshotMetrics();
        status.pointer = pointerPipeline_.snapshotMetrics();
        status.buttons = buttonPipeline_.snapshotMetrics();
        status.targetDeviceAttached = scope_.isTargetAttached();
        status.workspaceLimitation = platform_.workspace.limitation();
        status.isTapEnabled = tapController_ && tapController_->isTapEnabled();
        if (pointerTuning_) status.pointerTuning = pointerTuning_->status();
        if (auto refusal = platform_.eventTaps.lastRefusal()) status.lastError = std::move(refusal);
    });
    // A tuning that the system refused at first may be taken later.
    if (!isStopped_ && !options_.isPausedByUser && pointerTuning_ && pointerTuning_->isEnabled() &&
        !pointerTuning_->status().isApplied) {
        syncPointerTuning();
    }
}

void TessaraEngine::publish(EngineStatus status) {
    if (status == status_) return;
    status_ = std::move(status);
    if (onStatusChange_) onStatusChange_(status_);
    statusChanges_.emit(status_);
}

EventSubscription TessaraEngine::statusStream(std::shared_ptr<DispatchQueue> queue,
                                              EventStream<EngineStatus>::Listener listener) {
    return statusChanges_.subscribe(std::move(queue), std::move(listener), status_);
}

}  // namespace tessara
