#include "TessaraApp/DeviceMonitor.h"

#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/Awaitables.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/WallClock.h"

namespace tessara {
namespace {

/// The value of a fact that was read, or nothing.
template <typename T>
std::optional<T> factOf(HIDPPResult<T> result) {
    return result ? std::optional<T>(*std::move(result)) : std::nullopt;
}

DeviceMonitor* monitor(const std::weak_ptr<DeviceMonitor*>& token) {
    const auto self = token.lock();
    return self ? *self : nullptr;
}

/// All that the mouse says of itself. A fact that cannot be read stands in no other's way.
asio::awaitable<DeviceMonitor::Snapshot> readSnapshot(std::shared_ptr<HIDPPDevice> device) {
    DeviceMonitor::Snapshot facts;
    facts.connection = co_await device->state();
    facts.identity = co_await device->identity();
    if (facts.connection.isConnected()) {
        facts.protocolVersion = factOf(co_await device->protocolVersion());
        facts.deviceName = factOf(co_await device->deviceName());
        facts.information = factOf(co_await device->deviceInformation());
        facts.dpi = factOf(co_await device->dpi());
        facts.dpiRange = factOf(co_await device->dpiRange());
        facts.reportRate = factOf(co_await device->reportRate());
        facts.wheelMode = factOf(co_await device->wheelMode());
        facts.wheelCapability = factOf(co_await device->wheelCapability());
        facts.ratchet = factOf(co_await device->ratchetState());
    }
    facts.isNotPermitted = facts.connection.is<HIDPPConnectionState::NotPermitted>();
    co_return facts;
}

}  // namespace

DeviceMonitor::DeviceMonitor(bool managesDeviceSettings,
                             const std::shared_ptr<const HIDPPRunLoop>& runLoop,
                             std::shared_ptr<DispatchQueue> mainQueue, const WallClock& wallClock)
    : mainQueue_(std::move(mainQueue)),
      wallClock_(wallClock),
      device_(std::make_shared<HIDPPDevice>(HIDPPDeviceMatch::g502X, runLoop)),
      control_(std::make_shared<GatedHIDPPControl>(device_, managesDeviceSettings)),
      self_(std::make_shared<DeviceMonitor*>(this)) {}

DeviceMonitor::~DeviceMonitor() = default;

void DeviceMonitor::spawn(Operation operation) {
    // The monitor may be gone before the coroutine has its first turn.
    auto begin = [](std::weak_ptr<DeviceMonitor*> token, Operation begun) -> asio::awaitable<void> {
        if (DeviceMonitor* self = monitor(token)) co_await (self->*begun)();
    };
    asio::co_spawn(mainQueue_->executor(), begin(self_, operation), RethrowException());
}

void DeviceMonitor::start() {
    if (isStarted_) return;
    isStarted_ = true;
    ++listening_;
    // The stream stands before the connecting, so that no event of the connection is lost.
    subscription_ = device_->makeEventStream(
        mainQueue_,
        [weakSelf = std::weak_ptr(self_), listening = listening_](const HIDPPEvent& event) {
            DeviceMonitor* self = monitor(weakSelf);
            if (self && self->listening_ == listening) self->receive(event);
        });
    isDraining_ = true;  // events wait until the first refresh is through
    spawn(&DeviceMonitor::listen);
}

void DeviceMonitor::stop() {
    if (std::exchange(isStarted_, false)) {
        ++listening_;
        subscription_.cancel();
        events_.clear();
        isDraining_ = false;
    }
    auto disconnect = [](std::shared_ptr<HIDPPDevice> device) -> asio::awaitable<void> {
        co_await device->disconnect();
    };
    asio::co_spawn(mainQueue_->executor(), disconnect(device_), RethrowException());
}

asio::awaitable<void> DeviceMonitor::listen() {
    const std::weak_ptr<DeviceMonitor*> weakSelf = self_;
    const std::shared_ptr<HIDPPDevice> device = device_;
    const std::uint64_t listening = listening_;

    const auto connected = co_await device->connect();
    if (weakSelf.expired() || listening_ != listening) co_return;
    if (!connected) record(connected.error());
    co_await refresh();
    if (weakSelf.expired() || listening_ != listening) co_return;
    co_await drainEvents();
}

void DeviceMonitor::receive(const HIDPPEvent& event) {
    events_.push_back(event);
    if (isDraining_) return;
    isDraining_ = true;
    spawn(&DeviceMonitor::drainEvents);
}

asio::awaitable<void> DeviceMonitor::drainEvents() {
    const std::weak_ptr<DeviceMonitor*> weakSelf = self_;
    const std::uint64_t listening = listening_;
    while (!events_.empty()) {
        HIDPPEvent event = std::move(events_.front());
        events_.pop_front();
        co_await handle(std::move(event));
        if (weakSelf.expired() || listening_ != listening) co_return;
    }
    isDraining_ = false;
}

asio::awaitable<void> DeviceMonitor::handle(HIDPPEvent event) {
    if (onDeviceEvent_) onDeviceEvent_(event);
    if (event.is<HIDPPEvent::StateChanged>()) connectionHasChanged_ = true;
    if (event.is<HIDPPEvent::DeviceReady>()) {
        co_await applyThenRefresh();
    } else if (event.is<HIDPPEvent::DeviceAttached>() || event.is<HIDPPEvent::StateChanged>()) {
        co_await refresh();
    } else if (event.is<HIDPPEvent::DeviceRemoved>()) {
        setSnapshot({});
    }
}

asio::awaitable<void> DeviceMonitor::refresh() {
    if (isRefreshing_) co_return;
    const std::weak_ptr<DeviceMonitor*> weakSelf = self_;
    setRefreshing(true);
    Snapshot facts;
    do {
        connectionHasChanged_ = false;
        facts = co_await readSnapshot(device_);
        if (weakSelf.expired()) co_return;
    } while (connectionHasChanged_);
    facts.lastRefresh = wallClock_.now();
    setSnapshot(std::move(facts));
    setRefreshing(false);
}

asio::awaitable<void> DeviceMonitor::applyDesiredSettings() {
    if (!control_->isEnabled()) co_return;
    const std::weak_ptr<DeviceMonitor*> weakSelf = self_;
    const std::shared_ptr<GatedHIDPPControl> control = control_;
    if (desiredReportRateHertz_) {
        const auto done = co_await control->setReportRate(*desiredReportRateHertz_);
        if (weakSelf.expired()) co_return;
        if (!done) {
            record(done.error());
            co_return;
        }
    }
    if (desiredHighResolutionWheel_ && !(isWheelTaken_ && isWheelTaken_())) {
        const auto done = co_await control->setWheelHighResolution(*desiredHighResolutionWheel_);
        if (!done && !weakSelf.expired()) record(done.error());
    }
}

void DeviceMonitor::applyDesiredSettingsAndRefresh() {
    spawn(&DeviceMonitor::applyThenRefresh);
}

asio::awaitable<void> DeviceMonitor::applyThenRefresh() {
    const std::weak_ptr<DeviceMonitor*> weakSelf = self_;
    co_await applyDesiredSettings();
    if (!weakSelf.expired()) co_await refresh();
}

void DeviceMonitor::record(const HIDPPError& error) {
    Snapshot changed = snapshot_;
    changed.lastError.reset();
    if (error.is<HIDPPError::NotPermitted>()) {
        changed.isNotPermitted = true;
    } else if (!saysDeviceIsAbsent(error)) {
        changed.lastError = error.description();
    }
    setSnapshot(std::move(changed));
}

void DeviceMonitor::setSnapshot(Snapshot snapshot) {
    if (snapshot == snapshot_) return;
    snapshot_ = std::move(snapshot);
    Q_EMIT snapshotChanged();
}

void DeviceMonitor::setRefreshing(bool isRefreshing) {
    if (isRefreshing == isRefreshing_) return;
    isRefreshing_ = isRefreshing;
    Q_EMIT isRefreshingChanged();
}

void DeviceMonitor::setDesiredReportRateHertz(std::optional<std::int64_t> hertz) {
    if (hertz == desiredReportRateHertz_) return;
    desiredReportRateHertz_ = hertz;
    Q_EMIT desiredReportRateHertzChanged();
}

void DeviceMonitor::setDesiredHighResolutionWheel(std::optional<bool> isHighResolution) {
    if (isHighResolution == desiredHighResolutionWheel_) return;
    desiredHighResolutionWheel_ = isHighResolution;
    Q_EMIT desiredHighResolutionWheelChanged();
}

}  // namespace tessara
