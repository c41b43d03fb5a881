#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "TessaraCore/DeviceID.h"
#include "TessaraEngine/ScopeDecision.h"
#include "TessaraEngine/ScopedDevice.h"

namespace tessara {

class CGEvent;
class Dispatcher;
class HIDEventSystem;

/// Tells of every event whether it came from the mouse that the program is for.
///
/// It asks the event for its sender and looks that up in tables of the system's input devices. The
/// tables are made anew in the background, on the queue "ai.tessara.device-scope.refresh", and only
/// ever change whole; no event waits for them. A sender that is in no table sets off a refresh by
/// itself, at most once a second. Which device an event belongs to is all that is decided here, not
/// what is done with it.
///
/// Every failure ends in `UnidentifiedDevice` or in the tables of before, never in an error.
/// Operations may be called from any thread unless they say otherwise.
class DeviceScope {
  public:
    /// What happened since the start or the last `resetCounters`.
    struct Counters {
        /// Events of a device to reshape, those with the synthetic tag included.
        std::int64_t target = 0;
        /// Events of a device in the tables that is not to be reshaped.
        std::int64_t foreign = 0;
        /// Events behind which no device stands.
        std::int64_t unidentifiedNoHIDEvent = 0;
        /// Events of a device that is in no table, or not yet.
        std::int64_t unidentifiedUnknownSender = 0;
        /// Events that could not be asked, since the system lacks a call for it.
        std::int64_t unidentifiedSPIUnavailable = 0;
        /// Times the tables were replaced. A refresh that found no device is not among them.
        std::int64_t refreshes = 0;

        /// All decisions made, refreshes left out.
        [[nodiscard]] std::int64_t total() const;

        bool operator==(const Counters&) const = default;
    };

    /// The shortest time between two refreshes that nobody forced.
    static constexpr double refreshIntervalMillis = 1000.0;

    /// Starts a first refresh; until it has run no device is known and every event is unidentified.
    /// `matches` are the devices to reshape. Which calls `system` has is read here, once. `system`
    /// and the dispatcher's clock must outlive the scope.
    DeviceScope(std::vector<HIDPPDeviceMatch> matches, HIDEventSystem& system,
                Dispatcher& dispatcher);
    /// Waits for a refresh under way; nothing is asked of the system afterwards.
    ~DeviceScope();

    DeviceScope(const DeviceScope&) = delete;
    DeviceScope& operator=(const DeviceScope&) = delete;

    /// Events with this value in their user-data field count as those of `syntheticDeviceID`, a
    /// target. Set both before the tap starts; absent in the product.
    std::optional<std::int64_t> syntheticSourceTag;
    /// The device that such events are taken to be of. No system gives this number.
    DeviceID syntheticDeviceID{0xC099000000000001};

    /// The devices to reshape. A device is one of them by its vendor and product.
    [[nodiscard]] std::vector<HIDPPDeviceMatch> matches() const;
    /// Forces a refresh; until it has run the old devices count.
    void setMatches(std::vector<HIDPPDeviceMatch> matches);

    /// Whose event it is, by the sender that the system names for it, or by the event's own sender
    /// field for buttons and drags where the system names none. Tap thread; it does not allocate or
    /// wait, but for the refresh that an unknown sender sets off, which costs one enqueued block.
    [[nodiscard]] ScopeDecision decide(const CGEvent& event);

    /// Starts a refresh in the background. Without `force` only when the last one began
    /// `refreshIntervalMillis` ago or earlier. While one is under way, any number of forced ones
    /// make one more follow it, and others do nothing. A refresh that finds not one device, or is
    /// refused by the system, leaves the tables as they are.
    void refresh(bool force);
    /// Refreshes on the calling thread, whatever the interval. Not on the refresh queue.
    void refreshNow();

    /// All devices of the last refresh that found any, in rising order of `registryID`.
    [[nodiscard]] std::vector<ScopedDevice> knownDevices() const;
    /// Those of them that are reshaped.
    [[nodiscard]] std::vector<ScopedDevice> targetDevices() const;
    /// Whether there is any. A mouse that was unplugged counts until the next refresh.
    [[nodiscard]] bool isTargetAttached() const;

    /// All counters of one moment.
    [[nodiscard]] Counters snapshotCounters() const;
    /// Begins to count from 0.
    void resetCounters();

  private:
    class Tables;
    std::shared_ptr<Tables> tables_;  // what scheduled refreshes hold weakly
};

}  // namespace tessara
