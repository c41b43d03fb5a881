#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "HIDPPConnection.h"
#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "HIDPlusPlus/HIDPPEvent.h"
#include "HIDPlusPlus/HIDPPTask.h"
#include "Platform/Dispatch/EventStream.h"

namespace tessara {

class HIDPPHotplugMonitor;
class HIDPPRunLoop;

/// The life of a device: connects and reconnects, keeps the published state, and tells the
/// listeners.
///
/// Everything but the construction runs on `queue()`. Operations that wait may find the world
/// changed when they resume: `disconnect` and the departure of the mouse raise
/// `connectionGeneration_`, which makes every attempt void that began under an earlier one.
class HIDPPDeviceCore : public std::enable_shared_from_this<HIDPPDeviceCore> {
  public:
    HIDPPDeviceCore(HIDPPDeviceMatch match, std::shared_ptr<const HIDPPRunLoop> runLoop);
    /// Lets go of link and monitor without waiting.
    ~HIDPPDeviceCore();

    HIDPPDeviceCore(const HIDPPDeviceCore&) = delete;
    HIDPPDeviceCore& operator=(const HIDPPDeviceCore&) = delete;

    const std::shared_ptr<DispatchQueue>& queue() const { return queue_; }
    /// Any thread.
    EventStream<HIDPPEvent>& events() { return events_; }

    HIDPPRequestSettings& requestSettings() { return *requestSettings_; }
    void setAutomaticallyReconnects(bool reconnects) { automaticallyReconnects_ = reconnects; }

    const HIDPPConnectionState& state() const { return state_; }
    bool isConnecting() const { return connectTask_ != nullptr; }
    /// The connection that is set up or stands, or null.
    const std::shared_ptr<HIDPPConnection>& connection() const { return connection_; }

    HIDPPTask<void> connect();
    asio::awaitable<void> disconnect();

  private:
    /// One attempt to connect, which any number of callers wait for. It goes on when a caller does
    /// not; only `disconnect` cancels it.
    struct ConnectTask {
        bool isCancelled = false;
        std::optional<HIDPPResult<void>> outcome;
        std::vector<std::move_only_function<void(HIDPPResult<void>)>> waiters;
    };

    /// Whether a connection stands. The published state still says so while a disconnect takes the
    /// connection down.
    bool isConnected() const { return connection_ && state_.isConnected(); }

    HIDPPTask<void> waitForConnectTask();
    asio::awaitable<void> runConnectTask(std::shared_ptr<ConnectTask> task);
    HIDPPTask<void> performConnect(std::shared_ptr<ConnectTask> task);
    asio::awaitable<HIDPPResult<std::shared_ptr<HIDPPLink>>> openLink();
    HIDPPTask<void> learnFeatures(std::shared_ptr<HIDPPConnection> connection);
    asio::awaitable<void> abandon(std::shared_ptr<HIDPPConnection> connection);
    asio::awaitable<void> tearDownConnection();
    std::shared_ptr<HIDPPConnection> adopt(std::shared_ptr<HIDPPLink> link);

    void startMonitoring();
    void stopMonitoring();
    asio::awaitable<void> deviceAppeared();
    void deviceTerminated(std::uint64_t registryID);

    void publish(HIDPPConnectionState state);
    void emit(const HIDPPEvent& event) { events_.emit(event); }
    void emitAttached();

    // Constant after construction.
    const HIDPPDeviceMatch match_;
    const std::shared_ptr<const HIDPPRunLoop> runLoop_;
    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<HIDPPRequestSettings> requestSettings_;

    EventStream<HIDPPEvent> events_;

    // Owned by `queue_`.
    bool automaticallyReconnects_ = true;
    std::shared_ptr<HIDPPConnection> connection_;
    /// Present from the first connect until `disconnect`.
    std::shared_ptr<HIDPPHotplugMonitor> monitor_;
    HIDPPConnectionState state_;
    /// The one attempt that is under way.
    std::shared_ptr<ConnectTask> connectTask_;
    std::uint64_t connectionGeneration_ = 0;
};

}  // namespace tessara
