#include "TessaraEngine/SettingsApplier.h"

#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>

#include "Platform/Dispatch/Awaitables.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

SettingsApplier::SettingsApplier(std::shared_ptr<HIDPPControlling> control,
                                 const DesiredDeviceSettings& desired, Dispatcher& dispatcher)
    : control_(std::move(control)),
      queue_(dispatcher.makeQueue("ai.tessara.settings-applier", QualityOfService::userInitiated)),
      published_{.desired = desired} {}

template <typename Block>
void SettingsApplier::onQueue(Block block) {
    queue_->post([weakSelf = weak_from_this(), block = std::move(block)]() mutable {
        if (auto self = weakSelf.lock()) block(*self);
    });
}

void SettingsApplier::update(const DesiredDeviceSettings& desired) {
    onQueue([desired](SettingsApplier& self) {
        {
            MutexLock lock(self.mutex_);
            self.published_.desired = desired;
        }
        self.beginFullApply();
    });
}

void SettingsApplier::applyNow() {
    onQueue([](SettingsApplier& self) { self.beginFullApply(); });
}

void SettingsApplier::setDPIOverride(std::optional<std::int64_t> dpi) {
    onQueue([dpi](SettingsApplier& self) {
        std::optional<std::int64_t> effective;
        {
            MutexLock lock(self.mutex_);
            self.published_.dpiOverride = dpi;
            effective = dpi ? dpi : self.published_.desired.dpi;
        }
        // With nothing to go back to, the end of a shift writes nothing.
        if (effective) self.begin({.dpi = effective});
    });
}

void SettingsApplier::handle(const HIDPPEvent& event) {
    onQueue([event](SettingsApplier& self) {
        if (event.is<HIDPPEvent::DeviceReady>()) {
            self.beginFullApply();
            if (self.readyObserver_) self.readyObserver_();
        } else if (event.is<HIDPPEvent::DeviceRemoved>()) {
            {
                MutexLock lock(self.mutex_);
                self.published_.lastAppliedDPI.reset();
            }
            self.setState(SettingsIdle{});
        } else if (const auto* change = std::get_if<HIDPPEvent::StateChanged>(&event.value);
                   change && change->state.is<HIDPPConnectionState::NotPermitted>()) {
            self.setState(SettingsNotPermitted{});
        }
    });
}

void SettingsApplier::waitForApply(std::move_only_function<void()> done) {
    onQueue([done = std::move(done)](SettingsApplier& self) mutable {
        if (!self.lastApply_ || self.lastApply_->hasEnded) {
            done();
        } else {
            self.lastApply_->waiters.push_back(std::move(done));
        }
    });
}

void SettingsApplier::onDeviceDPIChange(DPIObserver observer) {
    onQueue([observer = std::move(observer)](SettingsApplier& self) mutable {
        self.dpiObserver_ = std::move(observer);
        if (self.dpiObserver_) self.dpiObserver_(self.deviceReportedDPI());
    });
}

void SettingsApplier::onDeviceReady(ReadyObserver observer) {
    onQueue([observer = std::move(observer)](SettingsApplier& self) mutable {
        self.readyObserver_ = std::move(observer);
    });
}

void SettingsApplier::onStateChange(StateObserver observer) {
    onQueue([observer = std::move(observer)](SettingsApplier& self) mutable {
        self.stateObserver_ = std::move(observer);
        if (self.stateObserver_) self.stateObserver_(self.state());
    });
}

void SettingsApplier::beginFullApply() {
    DesiredDeviceSettings settings;
    {
        MutexLock lock(mutex_);
        settings = published_.desired;
        if (published_.dpiOverride) settings.dpi = published_.dpiOverride;
    }
    setState(SettingsApplying{});
    begin(settings);
}

void SettingsApplier::begin(const DesiredDeviceSettings& settings) {
    lastApply_ = std::make_shared<Apply>();
    asio::co_spawn(queue_->executor(), run(weak_from_this(), control_, settings, lastApply_),
                   RethrowException());
}

asio::awaitable<void> SettingsApplier::run(std::weak_ptr<SettingsApplier> applier,
                                           std::shared_ptr<HIDPPControlling> control,
                                           DesiredDeviceSettings settings,
                                           std::shared_ptr<Apply> apply) {
    std::optional<HIDPPError> failure;
    std::optional<std::int64_t> applied;
    if (settings.dpi) {
        if (auto dpi = co_await control->setDPI(*settings.dpi)) {
            applied = *dpi;
        } else {
            failure = std::move(dpi.error());
        }
    }
    if (!failure && settings.reportRateHertz) {
        auto done = co_await control->setReportRate(*settings.reportRateHertz);
        if (!done) failure = std::move(done.error());
    }
    if (!failure && settings.highResolutionWheel) {
        auto done = co_await control->setWheelHighResolution(*settings.highResolutionWheel);
        if (!done) failure = std::move(done.error());
    }
    std::optional<std::int64_t> reported;
    if (!failure) {
        if (auto dpi = co_await control->readDPI()) reported = *dpi;
    }
    if (auto self = applier.lock()) {
        if (failure) {
            self->record(*failure);
        } else {
            self->record(applied, reported);
        }
    }
    apply->hasEnded = true;
    for (auto& waiter : std::exchange(apply->waiters, {}))
        waiter();
}

void SettingsApplier::record(std::optional<std::int64_t> dpi,
                             std::optional<std::int64_t> reported) {
    bool isNews = false;
    SettingsApplied applied;
    {
        MutexLock lock(mutex_);
        if (dpi) published_.lastAppliedDPI = dpi;
        applied.dpi = published_.lastAppliedDPI;
        isNews = reported && *reported >= 1 && published_.deviceReportedDPI != reported;
        if (isNews) published_.deviceReportedDPI = reported;
    }
    setState(applied);
    if (isNews && dpiObserver_) dpiObserver_(reported);
}

void SettingsApplier::record(const HIDPPError& error) {
    if (error.is<HIDPPError::NotPermitted>()) {
        setState(SettingsNotPermitted{});
    } else if (saysDeviceIsAbsent(error)) {
        // The apply runs again when the mouse is ready.
        setState(SettingsIdle{});
    } else {
        setState(SettingsFailed{error.description()});
    }
}

void SettingsApplier::setState(SettingsApplyState state) {
    {
        MutexLock lock(mutex_);
        if (published_.state == state) return;
        published_.state = state;
    }
    if (stateObserver_) stateObserver_(state);
}

SettingsApplyState SettingsApplier::state() const {
    MutexLock lock(mutex_);
    return published_.state;
}

std::optional<std::int64_t> SettingsApplier::lastAppliedDPI() const {
    MutexLock lock(mutex_);
    return published_.lastAppliedDPI;
}

std::optional<std::int64_t> SettingsApplier::deviceReportedDPI() const {
    MutexLock lock(mutex_);
    return published_.deviceReportedDPI;
}

std::optional<std::int64_t> SettingsApplier::effectiveDPI() const {
    MutexLock lock(mutex_);
    return published_.dpiOverride ? published_.dpiOverride : published_.desired.dpi;
}

}  // namespace tessara
