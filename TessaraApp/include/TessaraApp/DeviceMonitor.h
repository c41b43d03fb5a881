#pragma once

#include <QObject>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <asio/awaitable.hpp>

#include "HIDPlusPlus/HIDPPConnectionState.h"
#include "HIDPlusPlus/HIDPPDPI.h"
#include "HIDPlusPlus/HIDPPDeviceInformation.h"
#include "HIDPlusPlus/HIDPPEvent.h"
#include "HIDPlusPlus/HIDPPProtocolVersion.h"
#include "HIDPlusPlus/HIDPPReportRate.h"
#include "HIDPlusPlus/HIDPPWheel.h"
#include "Platform/Dispatch/EventStream.h"
#include "TessaraApp/GatedHIDPPControl.h"

namespace tessara {

class DispatchQueue;
class HIDPPDevice;
class HIDPPRunLoop;
class WallClock;

/// The application's one connection to the mouse: connects, listens, keeps a snapshot of the
/// mouse's facts for the interface, and writes the two settings that belong to no profile. The
/// engine gets the same connection through `control()`, and the mouse's events through the
/// application.
///
/// It lives on the main executor: everything is called there, and signals come there. A property
/// that is given an equal value tells nobody.
class DeviceMonitor : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY isRefreshingChanged)

  public:
    /// What is known of the mouse. Facts that could not be read are absent.
    struct Snapshot {
        HIDPPConnectionState connection;
        /// Of the interface that is connected to or being connected to.
        std::optional<HIDPPDeviceIdentity> identity;
        // What the mouse tells itself; all absent unless it is connected.
        std::optional<std::string> deviceName;
        std::optional<HIDPPProtocolVersion> protocolVersion;
        std::optional<HIDPPDeviceInformation> information;
        std::optional<HIDPPDPIState> dpi;
        std::optional<HIDPPDPIRange> dpiRange;
        std::optional<HIDPPReportRateInfo> reportRate;
        std::optional<HIDPPWheelMode> wheelMode;
        std::optional<HIDPPWheelCapability> wheelCapability;
        std::optional<HIDPPRatchetState> ratchet;
        /// What last went wrong, in words for the user; until the next refresh.
        std::optional<std::string> lastError;
        /// The user has not granted access to the mouse.
        bool isNotPermitted = false;
        /// When all this was read; absent when there was nothing to read.
        std::optional<std::chrono::sys_seconds> lastRefresh;

        bool operator==(const Snapshot&) const = default;
    };

    using EventHandler = std::function<void(const HIDPPEvent& event)>;

    /// Starts nothing. `managesDeviceSettings` is the gate of the control from the first byte on.
    DeviceMonitor(bool managesDeviceSettings, const std::shared_ptr<const HIDPPRunLoop>& runLoop,
                  std::shared_ptr<DispatchQueue> mainQueue, const WallClock& wallClock);
    ~DeviceMonitor() override;

    /// Connects and listens, until `stop`. Does nothing when it has started.
    void start();

    /// Stops listening and disconnects. Harmless when nothing runs.
    void stop();

    /// Reads everything anew into the snapshot. While a refresh runs, another one does nothing and
    /// does not wait; when the connection changes meanwhile, it begins again.
    asio::awaitable<void> refresh();

    /// Writes the wanted settings to the mouse, up to the first failure, which the snapshot tells.
    /// Does nothing behind a closed gate.
    asio::awaitable<void> applyDesiredSettings();

    /// Does the two above, one after the other, without the caller waiting.
    void applyDesiredSettingsAndRefresh();

    /// What is known of the mouse now; `snapshotChanged` tells when that is something else.
    [[nodiscard]] const Snapshot& snapshot() const { return snapshot_; }
    [[nodiscard]] bool isRefreshing() const { return isRefreshing_; }

    /// The wanted settings: stored only, and written at the next apply. Absent leaves the mouse
    /// alone.
    [[nodiscard]] std::optional<std::int64_t> desiredReportRateHertz() const {
        return desiredReportRateHertz_;
    }
    void setDesiredReportRateHertz(std::optional<std::int64_t> hertz);
    [[nodiscard]] std::optional<bool> desiredHighResolutionWheel() const {
        return desiredHighResolutionWheel_;
    }
    void setDesiredHighResolutionWheel(std::optional<bool> isHighResolution);

    /// Asked ahead of each write of the wheel's resolution: whether the system sets that itself, so
    /// that a write would go behind its back. Without it nothing does. Set before `start`.
    void setIsWheelTaken(std::function<bool()> isWheelTaken) {
        isWheelTaken_ = std::move(isWheelTaken);
    }

    /// Hears of every event of the mouse, ahead of what the monitor itself does. Set before
    /// `start`.
    void setOnDeviceEvent(EventHandler handler) { onDeviceEvent_ = std::move(handler); }

    /// The way to the mouse's settings for everyone, with the user's gate in it.
    [[nodiscard]] const std::shared_ptr<GatedHIDPPControl>& control() const { return control_; }

  Q_SIGNALS:
    void snapshotChanged();
    void isRefreshingChanged();
    void desiredReportRateHertzChanged();
    void desiredHighResolutionWheelChanged();

  private:
    using Operation = asio::awaitable<void> (DeviceMonitor::*)();

    asio::awaitable<void> listen();
    asio::awaitable<void> drainEvents();
    asio::awaitable<void> handle(HIDPPEvent event);
    void receive(const HIDPPEvent& event);
    void record(const HIDPPError& error);
    void setSnapshot(Snapshot snapshot);
    void setRefreshing(bool isRefreshing);
    asio::awaitable<void> applyThenRefresh();
    /// Begins one of the monitor's coroutines, unless the monitor is gone by then.
    void spawn(Operation operation);

    const std::shared_ptr<DispatchQueue> mainQueue_;
    const WallClock& wallClock_;
    const std::shared_ptr<HIDPPDevice> device_;
    const std::shared_ptr<GatedHIDPPControl> control_;
    /// Gone with the monitor; what coroutines ask before they go on.
    const std::shared_ptr<DeviceMonitor*> self_;

    Snapshot snapshot_;
    bool isRefreshing_ = false;
    /// While a refresh runs: what it has read is of a connection that is no more.
    bool connectionHasChanged_ = false;
    std::optional<std::int64_t> desiredReportRateHertz_;
    std::optional<bool> desiredHighResolutionWheel_;
    std::function<bool()> isWheelTaken_;
    EventHandler onDeviceEvent_;

    bool isStarted_ = false;
    /// Counts the starts, so that what belongs to an earlier one ends quietly.
    std::uint64_t listening_ = 0;
    EventSubscription subscription_;
    std::deque<HIDPPEvent> events_;
    bool isDraining_ = false;
};

}  // namespace tessara
