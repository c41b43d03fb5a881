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
/// What an operation learns holds for the connection under which it began. One that is overtaken by
/// the end of its connection fails, also when the mouse is connected again meanwhile: it never goes
/// on with another plug of the mouse, where features may have other indices.
///
/// Besides what is said with each operation, every one that talks to the mouse can fail with:
/// `NotConnected` without a connection or when it ends meanwhile; `DeviceRemoved` when the mouse
/// goes meanwhile; `Timeout`, `Protocol20`, `Protocol10` or `MalformedResponse` when it does not
/// answer as it should; `FeatureUnsupported` when it lacks the feature; `IOKit`, `NotOpen` or
/// `NotPermitted` when the platform refuses to write.
class HIDPPDevice {
  public:
    /// Nothing starts by this. `match` is the mouse that is looked for.
    HIDPPDevice(HIDPPDeviceMatch match, std::shared_ptr<const HIDPPRunLoop> runLoop);
    /// Ends the connection without waiting. Operations that are under way run to their end first.
    /// Any thread.
    ~HIDPPDevice();

    HIDPPDevice(const HIDPPDevice&) = delete;
    HIDPPDevice& operator=(const HIDPPDevice&) = delete;

    /// Whether the user lets this process open the mouse. Never prompts. Any thread.
    static HIDPPInputMonitoringAccess inputMonitoringAccess(const HIDTransport& transport);

    // Settings of the object. Each holds for every operation that is begun after it. Any thread.

    /// The device index of all requests, at first 0xFF: that of a mouse which is not behind a
    /// receiver.
    void setDeviceIndex(std::uint8_t deviceIndex);
    /// Seconds, above 0, that a request without a timeout of its own waits for its reply, at first
    /// 1. The time that the write takes counts, the wait behind other requests does not.
    void setDefaultTimeout(double seconds);
    /// Whether the mouse is connected to when it is plugged in, at first true.
    void setAutomaticallyReconnects(bool reconnects);

    // Lifecycle.

    /// Calls `listener` on `queue` for every event from now on, in order, until the subscription
    /// ends. What happened before is not told: whoever wants the present asks `state()`. Any
    /// thread.
    [[nodiscard]] EventSubscription makeEventStream(std::shared_ptr<DispatchQueue> queue,
                                                    EventStream<HIDPPEvent>::Listener listener);

    /// The published state: what the last `StateChanged` said.
    asio::awaitable<HIDPPConnectionState> state() const;
    /// Whether that is `Connected`.
    asio::awaitable<bool> isConnected() const;
    /// Whether an attempt to connect is under way.
    asio::awaitable<bool> isConnecting() const;
    /// The interface that is connected to or being connected to; nothing without one.
    asio::awaitable<std::optional<HIDPPDeviceIdentity>> identity() const;

    /// Connects, unless the mouse is connected: opens its interface, asks its protocol version,
    /// reads its feature table, and then says so. Callers at one time share one attempt and its
    /// outcome. From the first call until `disconnect` the mouse is also connected to whenever it
    /// is plugged in, also when this call fails. Fails with `DeviceNotFound` when it is not plugged
    /// in, `NotPermitted` when it may not be opened, and `NotConnected` when a `disconnect` ends
    /// the attempt.
    ///
    /// A plug leads to up to two attempts, 250 ms apart: a mouse may be announced before it can be
    /// opened. A call is one attempt.
    HIDPPTask<void> connect();

    /// Ends the connection, an attempt that is under way, and the reconnecting. What waits for a
    /// reply fails with `NotConnected`. Comes back when the interface is closed. Never fails.
    asio::awaitable<void> disconnect();

    /// What the present link has counted; nothing without a link.
    asio::awaitable<std::optional<HIDPPTransportStatistics>> transportStatistics() const;

    /// Sends one request to a feature index and gives the reply's payload: the bytes behind the
    /// function byte, as many as the mouse sent. `function` is 0 to 15; `timeout` in seconds, above
    /// 0, in place of the default one. Fails with `InvalidArgument` for more than 3, or in a long
    /// report 16, parameters.
    HIDPPTask<std::vector<std::uint8_t>> rawRequest(std::uint8_t featureIndex,
                                                    std::uint8_t function,
                                                    std::vector<std::uint8_t> parameters,
                                                    bool isLong,
                                                    std::optional<double> timeout = std::nullopt);

    // What the mouse is. Features that are known are not asked for again within a connection.

    /// Asks the mouse for its protocol version; `protocolVersion` asks only if it is not known.
    HIDPPTask<HIDPPProtocolVersion> ping();
    HIDPPTask<HIDPPProtocolVersion> protocolVersion();

    /// Reads the whole feature table, sorted by index: one request for each row, the features among
    /// them that the client has no name for. `connect` does it once.
    HIDPPTask<std::vector<HIDPPFeatureRecord>> discoverFeatures();

    /// The features known so far, sorted by index; none without a connection. Does not ask the
    /// mouse.
    asio::awaitable<std::vector<HIDPPFeatureRecord>> features() const;

    /// The feature's index on this mouse. Asks for a feature once at most, whether or not the mouse
    /// has it, and not at all once the table is known.
    HIDPPTask<std::uint8_t> featureIndex(HIDPPFeature feature);

    /// Whether `featureIndex` succeeds; an error of any kind counts as no.
    asio::awaitable<bool> supports(HIDPPFeature feature);

    /// The identifying facts. One request.
    HIDPPTask<HIDPPDeviceInformation> deviceInformation();

    /// The mouse's name, in UTF-8 with what is ill-formed replaced. One request for its length and
    /// one for each 16 bytes; it ends early where the mouse has no more.
    HIDPPTask<std::string> deviceName();

    // Resolution. Sensors count from 0, and a mouse has one as a rule.

    /// How many sensors there are.
    HIDPPTask<std::uint8_t> sensorCount();
    /// What a sensor can be set to.
    HIDPPTask<HIDPPDPIRange> dpiRange(std::uint8_t sensor = 0);
    /// What a sensor is set to.
    HIDPPTask<HIDPPDPIState> dpi(std::uint8_t sensor = 0);

    /// Sets the resolution nearest to `dpi` that the sensor takes, and gives what the mouse then
    /// says it is set to. Fails with `InvalidArgument` when that value does not fit in a request,
    /// that is in 1 to 65535. Reads the range, writes, reads back: three requests.
    HIDPPTask<std::int64_t> setDPI(std::int64_t dpi, std::uint8_t sensor = 0);

    // Report rate.

    /// What the mouse can report at, and what it does. Two requests.
    HIDPPTask<HIDPPReportRateInfo> reportRate();

    /// Sets the rate. Fails with `InvalidArgument` for one that the mouse does not offer, for which
    /// it is asked first. Does not read back.
    HIDPPTask<void> setReportRate(HIDPPReportRate rate);

    // Wheel.

    /// What the wheel can do.
    HIDPPTask<HIDPPWheelCapability> wheelCapability();
    /// How it is set.
    HIDPPTask<HIDPPWheelMode> wheelMode();

    /// Sets all of the mode at once. Does not read back.
    HIDPPTask<void> setWheelMode(HIDPPWheelMode mode);

    /// Sets the resolution of the wheel and leaves the rest of its mode alone; writes only if that
    /// changes something. Gives the mode as the mouse then reads.
    HIDPPTask<HIDPPWheelMode> setWheelHighResolution(bool enabled);

    /// Whether the wheel runs freely now. The user switches that with a key of the mouse.
    HIDPPTask<HIDPPRatchetState> ratchetState();

    // Onboard profiles.

    /// The make-up of the mouse's memory.
    HIDPPTask<HIDPPOnboardProfilesDescriptor> onboardProfilesDescriptor();
    /// Says who decides what the mouse does. Does not read back.
    HIDPPTask<void> setOnboardMode(HIDPPOnboardMode mode);
    /// Who decides now; `MalformedResponse` for an answer that is neither.
    HIDPPTask<HIDPPOnboardMode> onboardMode();
    /// The profile that is in force in the mouse.
    HIDPPTask<HIDPPCurrentProfile> currentProfile();

    /// 16 bytes of the mouse's memory, from `offset` of a sector on. The mouse refuses what lies
    /// outside of it.
    HIDPPTask<std::array<std::uint8_t, 16>> readOnboardMemory(std::uint16_t sector,
                                                              std::uint16_t offset);

  private:
    /// Constant after construction; its state lives on its queue.
    const std::shared_ptr<HIDPPDeviceCore> core_;
};

}  // namespace tessara
