#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "HIDPlusPlus/HIDPPLink.h"
#include "HIDPlusPlus/HIDPPReplies.h"
#include "HIDPlusPlus/HIDPPTask.h"

namespace tessara {

class HIDPPRunLoop;

/// What goes into every request of a device, over all of its connections.
struct HIDPPRequestSettings {
    std::uint8_t deviceIndex = 0xFF;
    /// Seconds, for requests that carry no timeout of their own.
    double defaultTimeout = 1.0;
};

/// One connection of a device from its link to its end, with everything that is known of the mouse
/// at its other end: what was read over one connection is never taken for the truth about another.
/// An operation belongs to its connection for as long as it runs; once the connection has ended,
/// what it asks for further fails with `NotConnected`.
///
/// Lives on the device's queue, where all operations run and resume.
class HIDPPConnection {
  public:
    using Bytes = std::vector<std::uint8_t>;

    /// `link` is open. `queue` is the device's.
    HIDPPConnection(std::shared_ptr<const HIDPPRunLoop> runLoop,
                    std::shared_ptr<DispatchQueue> queue, std::shared_ptr<HIDPPLink> link,
                    std::shared_ptr<const HIDPPRequestSettings> settings);
    /// Closes the link, without waiting, if the connection has not ended.
    ~HIDPPConnection();

    HIDPPConnection(const HIDPPConnection&) = delete;
    HIDPPConnection& operator=(const HIDPPConnection&) = delete;

    const HIDPPDeviceIdentity& identity() const { return link_->identity(); }
    std::uint64_t registryID() const { return link_->registryID(); }

    /// Who hears the notifications, on the run loop's queue, until the connection ends.
    void setNotificationHandler(HIDPPLink::NotificationHandler handler);

    /// Ends the connection in good order, and waits until the link is closed.
    asio::awaitable<void> close();

    /// Ends the connection of a device that has gone; does not wait.
    void invalidate();

    asio::awaitable<HIDPPTransportStatistics> statistics() const;

    /// The one way to the wire: a request and the payload of its reply. Without a timeout of its
    /// own it gets the settings'.
    HIDPPTask<Bytes> request(std::uint8_t featureIndex, std::uint8_t function, Bytes parameters,
                             bool isLong, std::optional<double> timeout = std::nullopt);

    // Discovery. What is found is remembered, and what is remembered is not asked again.
    HIDPPTask<HIDPPProtocolVersion> ping();
    HIDPPTask<HIDPPProtocolVersion> protocolVersion();
    HIDPPTask<std::vector<HIDPPFeatureRecord>> discoverFeatures();
    std::vector<HIDPPFeatureRecord> features() const;
    HIDPPTask<std::uint8_t> featureIndex(HIDPPFeature feature);
    HIDPPTask<HIDPPDeviceInformation> deviceInformation();
    HIDPPTask<std::string> deviceName();

    // Operations.
    HIDPPTask<std::uint8_t> sensorCount();
    HIDPPTask<HIDPPDPIRange> dpiRange(std::uint8_t sensor);
    HIDPPTask<HIDPPDPIState> dpi(std::uint8_t sensor);
    HIDPPTask<std::int64_t> setDPI(std::int64_t wanted, std::uint8_t sensor);
    HIDPPTask<HIDPPReportRateInfo> reportRate();
    HIDPPTask<void> setReportRate(HIDPPReportRate rate);
    HIDPPTask<HIDPPWheelCapability> wheelCapability();
    HIDPPTask<HIDPPWheelMode> wheelMode();
    HIDPPTask<void> setWheelMode(HIDPPWheelMode mode);
    HIDPPTask<HIDPPWheelMode> setWheelHighResolution(bool enabled);
    HIDPPTask<HIDPPRatchetState> ratchetState();
    HIDPPTask<HIDPPOnboardProfilesDescriptor> onboardProfilesDescriptor();
    HIDPPTask<void> setOnboardMode(HIDPPOnboardMode mode);
    HIDPPTask<HIDPPOnboardMode> onboardMode();
    HIDPPTask<HIDPPCurrentProfile> currentProfile();
    HIDPPTask<std::array<std::uint8_t, 16>> readOnboardMemory(std::uint16_t sector,
                                                              std::uint16_t offset);

  private:
    /// Asks a feature's function and gives the reply's payload.
    HIDPPTask<Bytes> get(HIDPPFeature feature, std::uint8_t function, Bytes parameters,
                         bool isLong);

    /// Tells a feature's function something, always in a long report; the reply is of no interest.
    HIDPPTask<void> set(HIDPPFeature feature, std::uint8_t function, Bytes parameters);

    /// `get`, and the reply decoded.
    template <typename T>
    HIDPPTask<T> read(HIDPPFeature feature, std::uint8_t function, Bytes parameters, bool isLong,
                      HIDPPResult<T> (*decode)(HIDPPReplies::Payload)) {
        const auto reply = co_await get(feature, function, std::move(parameters), isLong);
        if (!reply) co_return std::unexpected(reply.error());
        co_return decode(*reply);
    }

    // Constant after construction.
    const std::shared_ptr<const HIDPPRunLoop> runLoop_;
    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<HIDPPLink> link_;
    const std::shared_ptr<const HIDPPRequestSettings> settings_;

    // Owned by the device's queue.
    bool hasEnded_ = false;
    std::map<std::uint16_t, HIDPPFeatureRecord> featuresByID_;
    /// Identifiers that a lookup has found missing.
    std::set<std::uint16_t> absentFeatureIDs_;
    /// The whole feature table has been read: what is not in `featuresByID_` does not exist.
    bool fullTableDiscovered_ = false;
    std::optional<HIDPPProtocolVersion> cachedProtocolVersion_;
};

}  // namespace tessara
