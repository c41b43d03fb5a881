#include "HIDPPDeviceCore.h"

#include <chrono>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>

#include "AwaitCallback.h"
#include "HIDPPEnumerator.h"
#include "HIDPPHotplugMonitor.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/Awaitables.h"

namespace tessara {

namespace {

/// The interfaces of a freshly plugged mouse can be found before they can be opened, so that the
/// first attempt may come too early. A second one follows after this pause, and no third.
constexpr auto pauseBetweenAttempts = std::chrono::milliseconds(250);

std::unexpected<HIDPPError> notConnected() {
    return std::unexpected<HIDPPError>(HIDPPError::NotConnected{});
}

}  // namespace

HIDPPDeviceCore::HIDPPDeviceCore(HIDPPDeviceMatch match,
                                 std::shared_ptr<const HIDPPRunLoop> runLoop)
    : match_(match),
      runLoop_(std::move(runLoop)),
      queue_(runLoop_->queue()),
      requestSettings_(std::make_shared<HIDPPRequestSettings>()) {}

HIDPPDeviceCore::~HIDPPDeviceCore() {
    stopMonitoring();
}

HIDPPTask<void> HIDPPDeviceCore::connect() {
    if (isConnected()) co_return HIDPPResult<void>{};
    co_return co_await waitForConnectTask();
}

asio::awaitable<void> HIDPPDeviceCore::disconnect() {
    const auto generation = ++connectionGeneration_;
    if (const auto task = std::exchange(connectTask_, nullptr)) task->isCancelled = true;
    stopMonitoring();
    co_await tearDownConnection();
    if (connectionGeneration_ == generation) publish(HIDPPConnectionState::Disconnected{});
}

HIDPPTask<void> HIDPPDeviceCore::waitForConnectTask() {
    if (!connectTask_) {
        connectTask_ = std::make_shared<ConnectTask>();
        asio::co_spawn(
            queue_->executor(),
            [core = shared_from_this(), task = connectTask_] { return core->runConnectTask(task); },
            RethrowException());
    }
    auto enlist = [task = connectTask_](auto resume) {
        task->waiters.emplace_back(std::move(resume));
    };
    co_return co_await awaitCallback<HIDPPResult<void>>(queue_, std::move(enlist));
}

asio::awaitable<void> HIDPPDeviceCore::runConnectTask(std::shared_ptr<ConnectTask> task) {
    const auto outcome = co_await performConnect(task);
    // After a disconnect or a departure the field may hold a newer attempt already.
    if (connectTask_ == task) connectTask_ = nullptr;
    for (auto& resume : std::exchange(task->waiters, {}))
        resume(outcome);
}

HIDPPTask<void> HIDPPDeviceCore::performConnect(std::shared_ptr<ConnectTask> task) {
    if (task->isCancelled) co_return notConnected();
    if (isConnected()) co_return HIDPPResult<void>{};
    const auto generation = connectionGeneration_;
    const auto isVoid = [this, task, generation] {
        return task->isCancelled || connectionGeneration_ != generation;
    };
    startMonitoring();
    co_await tearDownConnection();
    if (isVoid()) co_return notConnected();

    auto link = co_await openLink();
    if (isVoid()) {
        if (link) co_await abandon(adopt(std::move(*link)));
        co_return notConnected();
    }
    if (!link) {
        if (link.error().is<HIDPPError::NotPermitted>()) {
            publish(HIDPPConnectionState::NotPermitted{});
        }
        co_return std::unexpected(link.error());
    }

    const auto connection = adopt(std::move(*link));
    connection_ = connection;
    connection->setNotificationHandler(
        [weakCore = weak_from_this(), weakConnection = std::weak_ptr(connection), queue = queue_](
            std::uint8_t featureIndex, std::uint8_t functionByte,
            std::vector<std::uint8_t> payload) {
            HIDPPEvent::Notification notification{featureIndex, functionByte, std::move(payload)};
            queue->post([weakCore, weakConnection, notification = std::move(notification)] {
                const auto core = weakCore.lock();
                // A connection that has ended has nothing more to say.
                if (core && core->connection_ && core->connection_ == weakConnection.lock()) {
                    core->emit(notification);
                }
            });
        });

    const auto learned = co_await learnFeatures(connection);
    if (!learned && connectionGeneration_ == generation) {
        co_await tearDownConnection();
        if (connectionGeneration_ == generation) publish(HIDPPConnectionState::Disconnected{});
        co_return learned;
    }
    if (isVoid()) {
        co_await abandon(connection);
        if (!learned) co_return learned;
        co_return notConnected();
    }
    publish(HIDPPConnectionState::Connected{connection->identity()});
    emit(HIDPPEvent::DeviceReady{connection->identity()});
    co_return HIDPPResult<void>{};
}

asio::awaitable<HIDPPResult<std::shared_ptr<HIDPPLink>>> HIDPPDeviceCore::openLink() {
    using Opened = HIDPPResult<std::shared_ptr<HIDPPLink>>;
    auto findAndOpen = [runLoop = runLoop_, match = match_](auto resume) {
        runLoop->perform([runLoop, match, resume = std::move(resume)]() mutable {
            auto link = HIDPPEnumerator::hidppLink(runLoop, match);
            if (!link) {
                resume(Opened(std::unexpect, HIDPPError::DeviceNotFound{}));
            } else if (auto opened = link->open(); !opened) {
                resume(Opened(std::unexpect, std::move(opened.error())));
            } else {
                resume(Opened(std::move(link)));
            }
        });
    };
    co_return co_await awaitCallback<Opened>(queue_, std::move(findAndOpen));
}

HIDPPTask<void> HIDPPDeviceCore::learnFeatures(std::shared_ptr<HIDPPConnection> connection) {
    const auto version = co_await connection->ping();
    if (!version) co_return std::unexpected(version.error());
    const auto features = co_await connection->discoverFeatures();
    if (!features) co_return std::unexpected(features.error());
    co_return HIDPPResult<void>{};
}

std::shared_ptr<HIDPPConnection> HIDPPDeviceCore::adopt(std::shared_ptr<HIDPPLink> link) {
    return std::make_shared<HIDPPConnection>(runLoop_, queue_, std::move(link), requestSettings_);
}

asio::awaitable<void> HIDPPDeviceCore::abandon(std::shared_ptr<HIDPPConnection> connection) {
    if (connection_ == connection) connection_ = nullptr;
    co_await connection->close();
}

asio::awaitable<void> HIDPPDeviceCore::tearDownConnection() {
    const auto connection = std::exchange(connection_, nullptr);
    if (connection) co_await connection->close();
}

void HIDPPDeviceCore::startMonitoring() {
    if (monitor_) return;
    monitor_ = std::make_shared<HIDPPHotplugMonitor>(
        runLoop_, match_,
        [weakCore = weak_from_this(), queue = queue_] {
            auto appear = [](std::weak_ptr<HIDPPDeviceCore> weak) -> asio::awaitable<void> {
                if (const auto core = weak.lock()) co_await core->deviceAppeared();
            };
            asio::co_spawn(queue->executor(), appear(weakCore), RethrowException());
        },
        [weakCore = weak_from_this(), queue = queue_](std::uint64_t registryID) {
            queue->post([weakCore, registryID] {
                if (const auto core = weakCore.lock()) core->deviceTerminated(registryID);
            });
        });
    runLoop_->perform([monitor = monitor_] { monitor->start(); });
}

void HIDPPDeviceCore::stopMonitoring() {
    if (!monitor_) return;
    runLoop_->perform([monitor = std::exchange(monitor_, nullptr)] { monitor->stop(); });
}

asio::awaitable<void> HIDPPDeviceCore::deviceAppeared() {
    // An attempt that is under way finds the mouse by itself.
    if (!monitor_ || isConnected() || connectTask_ || !automaticallyReconnects_) co_return;
    const auto generation = connectionGeneration_;
    const auto isVoid = [this, generation] {
        return connectionGeneration_ != generation || !monitor_;
    };
    constexpr int attempts = 2;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        // Comes back at once when a call has connected meanwhile.
        const auto outcome = co_await connect();
        if (outcome) {
            emitAttached();
            co_return;
        }
        if (isVoid() || attempt == attempts) co_return;
        co_await sleepUntil(queue_, queue_->clock().now() + pauseBetweenAttempts);
        if (isVoid()) co_return;
    }
}

void HIDPPDeviceCore::deviceTerminated(std::uint64_t registryID) {
    if (!connection_ || connection_->registryID() != registryID) return;
    ++connectionGeneration_;
    // An attempt is void by this, but has yet to come to its end. A plug that is announced before
    // that is none that it could find.
    connectTask_ = nullptr;
    std::exchange(connection_, nullptr)->invalidate();
    emit(HIDPPEvent::DeviceRemoved{});
    publish(HIDPPConnectionState::Disconnected{});
}

void HIDPPDeviceCore::publish(HIDPPConnectionState state) {
    if (state_ == state) return;
    state_ = std::move(state);
    emit(HIDPPEvent::StateChanged{state_});
}

void HIDPPDeviceCore::emitAttached() {
    if (connection_) emit(HIDPPEvent::DeviceAttached{connection_->identity()});
}

}  // namespace tessara
