#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "HIDPlusPlus/HIDPPDPI.h"
#include "HIDPlusPlus/HIDPPDeviceInformation.h"
#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "HIDPlusPlus/HIDPPEvent.h"
#include "HIDPlusPlus/HIDPPFeature.h"
#include "HIDPlusPlus/HIDPPInputMonitoringAccess.h"
#include "HIDPlusPlus/HIDPPOnboardProfiles.h"
#include "HIDPlusPlus/HIDPPProtocolVersion.h"
#include "HIDPlusPlus/HIDPPReportRate.h"
#include "HIDPlusPlus/HIDPPTask.h"
#include "HIDPlusPlus/HIDPPTransportStatistics.h"
#include "HIDPlusPlus/HIDPPWheel.h"
#include "Platform/Dispatch/EventStream.h"

namespace tessara {

class HIDPPConnection;
class HIDPPDeviceCore;
class HIDPPRunLoop;
class HIDTransport;

/// One mouse as the program sees it: connects to it, reconnects by itself when it is plugged in
/// again, tells what happens to it, and operates its features. Made once for a wanted mouse,
/// whether or not it is plugged in, and kept. It is not a way to the mouse's pointer, buttons or
/// wheel, which work without it and beside it.
///
/// All of the device's state lives on the run loop's queue, called the device's here. Operations
/// are coroutines that may be awaited from any executor: each runs on the device's queue and
/// resumes its caller on the caller's executor. An operation that was begun runs to its end;
/// cancelling the caller does not cancel it. Operations interleave where they wait; the requests of
/// each stay in order.
///
/// Besides what is said with each operation, every one that talks to the mouse can fail with:
/// `NotConnected` without a connection or when it ends meanwhile; `DeviceRemoved` when the mouse
/// goes meanwhile; `Timeout`, `Protocol20`, `Protocol10` or `MalformedResponse` when it does not
/// answer as it should; `FeatureUnsupported` when it lacks the feature; `IOKit`, `NotOpen` or
/// `NotPermitted` when the platform refuses to write.
class HIDPPDevice {
  public:
    /// Nothing starts by this.
    HIDPPDevice(HIDPPDeviceMatch match, std::shared_ptr<const HIDPPRunLoop> runLoop);
    /// Ends the connection without waiting. Operations that are under way run to their end first.
    ~HIDPPDevice();

    HIDPPDevice(const HIDPPDevice&) = delete;
    HIDPPDevice& operator=(const HIDPPDevice&) = delete;

    /// Whether the user lets this process open the mouse. Never prompts. Any thread.
    static HIDPPInputMonitoringAccess inputMonitoringAccess(const HIDTransport& transport);

    // Settings of the object. Each holds for every operation that is begun after it. Any thread.

    /// The device index of all requests, at first 0xFF.
    void setDeviceIndex(std::uint8_t deviceIndex);
    /// Seconds that a request without a timeout of its own waits for its reply, at first 1.
    void setDefaultTimeout(double seconds);
    /// Whether the mouse is connected to when it is plugged in, at first true.
    void setAutomaticallyReconnects(bool reconnects);

    // Lifecycle.

    /// Calls `listener` on `queue` for every event from now on, in order, until the subscription
    /// ends. What happened before is not told: whoever wants the present asks `state()`. Any
    /// thread.
    [[nodiscard]] EventSubscription makeEventStream(std::shared_ptr<DispatchQueue> queue,
                                                    EventStream<HIDPPEvent>::Listener listener);

    asio::awaitable<HIDPPConnectionState> state() const;
    asio::awaitable<bool> isConnected() const;
    /// Whether an attempt to connect is under way.
    asio::awaitable<bool> isConnecting() const;
    /// The interface that is connected to or being connected to.
    asio::awaitable<std::optional<HIDPPDeviceIdentity>> identity() const;

    /// Connects, unless the mouse is connected: opens its interface, asks its protocol version,
    /// reads its feature table, and then says so. Callers at one time share one attempt and its
    /// outcome. From the first call until `disconnect` the mouse is also connected to whenever it
    /// is plugged in, also when this call fails. Fails with `DeviceNotFound` when it is not plugged
    /// in, `NotPermitted` when it may not be opened.
    HIDPPTask<void> connect();

    /// Ends the connection, an attempt that is under way, and the reconnecting.
    asio::awaitable<void> disconnect();

    /// What the present link has counted; nothing without a link.
    asio::awaitable<std::optional<HIDPPTransportStatistics>> transportStatistics() const;

    /// Sends one request to a feature index and gives the reply's payload. `function` is 0 to 15;
    /// `timeout` in seconds. Fails with `InvalidArgument` for more than 3, or in a long report 16,
    /// parameters.
    HIDPPTask<std::vector<std::uint8_t>> rawRequest(std::uint8_t featureIndex,
                                                    std::uint8_t function,
                                                    std::vector<std::uint8_t> parameters,
                                                    bool isLong,
                                                    std::optional<double> timeout = std::nullopt);

    // What the mouse is. Features that are known are not asked for again within a connection.

    /// Asks the mouse for its protocol version; `protocolVersion` asks only if it is not known.
    HIDPPTask<HIDPPProtocolVersion> ping();
    HIDPPTask<HIDPPProtocolVersion> protocolVersion();

    /// Reads the whole feature table, sorted by index.
    HIDPPTask<std::vector<HIDPPFeatureRecord>> discoverFeatures();

    /// The features known so far, sorted by index. Does not ask the mouse.
    asio::awaitable<std::vector<HIDPPFeatureRecord>> features() const;

    /// The feature's index on this mouse.
    HIDPPTask<std::uint8_t> featureIndex(HIDPPFeature feature);

    /// Whether `featureIndex` succeeds; an error of any kind counts as no.
    asio::awaitable<bool> supports(HIDPPFeature feature);

    HIDPPTask<HIDPPDeviceInformation> deviceInformation();

    /// The mouse's name, with ill-formed characters replaced.
    HIDPPTask<std::string> deviceName();

    // Resolution.

    HIDPPTask<std::uint8_t> sensorCount();
    HIDPPTask<HIDPPDPIRange> dpiRange(std::uint8_t sensor = 0);
    HIDPPTask<HIDPPDPIState> dpi(std::uint8_t sensor = 0);

    /// Sets the resolution nearest to `dpi` that the sensor takes, and gives what the mouse then
    /// says it is set to. Fails with `InvalidArgument` when that value does not fit in a request.
    HIDPPTask<std::int64_t> setDPI(std::int64_t dpi, std::uint8_t sensor = 0);

    // Report rate.

    HIDPPTask<HIDPPReportRateInfo> reportRate();

    /// Fails with `InvalidArgument` for a rate that the mouse does not offer. Does not read back.
    HIDPPTask<void> setReportRate(HIDPPReportRate rate);

    // Wheel.

    HIDPPTask<HIDPPWheelCapability> wheelCapability();
    HIDPPTask<HIDPPWheelMode> wheelMode();

    /// Sets all of the mode at once. Does not read back.
    HIDPPTask<void> setWheelMode(HIDPPWheelMode mode);

    /// Sets the resolution of the wheel and leaves the rest of its mode alone; writes only if that
    /// changes something. Gives the mode as the mouse then reads.
    HIDPPTask<HIDPPWheelMode> setWheelHighResolution(bool enabled);

    HIDPPTask<HIDPPRatchetState> ratchetState();

    // Onboard profiles.

    HIDPPTask<HIDPPOnboardProfilesDescriptor> onboardProfilesDescriptor();
    HIDPPTask<void> setOnboardMode(HIDPPOnboardMode mode);
    HIDPPTask<HIDPPOnboardMode> onboardMode();
    HIDPPTask<HIDPPCurrentProfile> currentProfile();

    /// 16 bytes of the mouse's memory.
    HIDPPTask<std::array<std::uint8_t, 16>> readOnboardMemory(std::uint16_t sector,
                                                              std::uint16_t offset);

  private:
    /// Constant after construction; its state lives on its queue.
    const std::shared_ptr<HIDPPDeviceCore> core_;
};

}  // namespace tessara
