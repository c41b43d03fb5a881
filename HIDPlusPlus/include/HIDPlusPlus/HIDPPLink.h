#pragma once

#include <cstdint>
#include <deque>
#include <expected>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "HIDPlusPlus/HIDPPDeviceIdentity.h"
#include "HIDPlusPlus/HIDPPError.h"
#include "HIDPlusPlus/HIDPPTransportStatistics.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

class HIDInterface;
class HIDPPRunLoop;
class HIDPPSendQueue;

/// The transport over one open HID interface of the mouse: puts one request at a time on the wire,
/// gives each reply to its own request, and tells replies, stale replies and notifications apart.
/// It moves bytes and knows nothing of features.
///
/// A reply names its request only by device index, feature index and function byte, with a software
/// id of four bits. Two measures keep a late reply from being taken for the reply to a later
/// request: the software id rotates, and the keys of the last 15 finished requests are remembered
/// as retired.
///
/// A link is made closed, opened once and ended once, by `close` or `invalidate`; a new connection
/// makes a new link. Everything here runs on the run loop's queue, but for the construction and
/// what says otherwise.
class HIDPPLink : public std::enable_shared_from_this<HIDPPLink> {
  public:
    /// The reply's payload, the bytes behind the function byte as the device delivered them.
    using Reply = std::expected<std::vector<std::uint8_t>, HIDPPError>;
    /// Called exactly once, on the run loop's queue; must be short and must not block.
    using Completion = std::move_only_function<void(Reply)>;
    /// Called on the run loop's queue; must be short and must not block.
    using NotificationHandler = std::move_only_function<void(
        std::uint8_t featureIndex, std::uint8_t functionByte, std::vector<std::uint8_t> payload)>;

    /// What is asked of the device.
    struct Request {
        std::uint8_t deviceIndex = 0;
        /// On this device.
        std::uint8_t featureIndex = 0;
        /// Function number, 0 to 15.
        std::uint8_t function = 0;
        /// At most 3 bytes, 16 in a long report.
        std::vector<std::uint8_t> parameters = {};
        bool isLong = false;
        /// Seconds, above 0, from the moment the request is handed to be written to its reply.
        double timeout = 0;
        /// What a timeout error says has timed out.
        std::string label;
    };

    /// Any thread. Nothing is opened.
    HIDPPLink(std::shared_ptr<const HIDPPRunLoop> runLoop, std::shared_ptr<HIDInterface> interface);
    ~HIDPPLink();

    HIDPPLink(const HIDPPLink&) = delete;
    HIDPPLink& operator=(const HIDPPLink&) = delete;

    /// What the platform told of the interface when it was found. Any thread.
    const HIDPPDeviceIdentity& identity() const { return identity_; }
    /// The platform's name for this interface of this plug. Any thread.
    std::uint64_t registryID() const { return registryID_; }

    /// Opens the interface and listens to it; does nothing when it is open. When the platform
    /// refuses, the error says why and the link stays closed.
    std::expected<void, HIDPPError> open();

    /// Puts the request at the end of the queue. Completes with the payload; `Protocol20` or
    /// `Protocol10` when the device refuses; `Timeout` when it does not answer; the write's error;
    /// `NotOpen` on a link that is not open; `NotConnected` or `DeviceRemoved` when the link ends
    /// first; `InvalidArgument` when the parameters do not fit. After a timeout nothing is sent for
    /// 30 ms, in which the late reply may come and be dropped.
    void enqueue(Request request, Completion completion);

    /// Who hears the notifications from now on; without a handler they are counted and dropped.
    void setNotificationHandler(NotificationHandler handler) {
        notificationHandler_ = std::move(handler);
    }

    /// Ends the link in good order: whatever waits fails with `NotConnected`. Does not wait for a
    /// write that is under way. Nothing happens when the link has ended.
    void close();

    /// Ends the link after the device has gone: the same, but for `DeviceRemoved`.
    void invalidate();

    /// The counters as they stand; they go on counting.
    const HIDPPTransportStatistics& statistics() const { return statistics_; }

  private:
    /// What a reply must echo. The function byte includes the software id.
    struct TransactionKey {
        std::uint8_t deviceIndex = 0;
        std::uint8_t featureIndex = 0;
        std::uint8_t functionByte = 0;
        bool operator==(const TransactionKey&) const = default;
    };

    struct PendingRequest {
        /// Tells the outcomes of this request from those of an earlier one.
        std::uint64_t id = 0;
        TransactionKey key;
        std::vector<std::uint8_t> report;
        double timeout = 0;
        std::string label;
        Completion completion;
    };

    void receive(std::uint8_t reportID, std::span<const std::uint8_t> bytes);
    void handleInputReport(std::span<const std::uint8_t> report);
    void pump();
    void send(const PendingRequest& request);
    void startTimeout(const PendingRequest& request);
    void startCooldown();
    void handleTimeout(std::uint64_t requestID);
    void handleSendFailure(std::uint64_t requestID, IOReturn code);
    bool isInFlight(std::uint64_t requestID) const;
    PendingRequest takeHead();
    void finishHead(Reply outcome);
    void retire(const TransactionKey& key);
    void cancelTimers();
    void failAll(const HIDPPError& error);
    void end(const HIDPPError& error);

    // Constant after construction.
    const std::shared_ptr<const HIDPPRunLoop> runLoop_;
    const std::shared_ptr<HIDInterface> interface_;
    const HIDPPDeviceIdentity identity_;
    const std::uint64_t registryID_;

    // Owned by the run loop's queue.
    bool isOpen_ = false;
    NotificationHandler notificationHandler_;
    /// The head is the request in flight when `inFlight_` is set.
    std::deque<PendingRequest> queue_;
    /// A request has been handed to the send queue and has no outcome yet.
    bool inFlight_ = false;
    std::uint64_t nextRequestID_ = 1;
    std::uint8_t lastSoftwareID_ = 0;
    std::unique_ptr<DispatchTimer> timer_;
    /// The pause after a timeout, in which nothing is sent.
    std::unique_ptr<DispatchTimer> cooldownTimer_;
    /// Keys whose reply is no longer wanted, oldest first, each once.
    std::deque<TransactionKey> retiredKeys_;
    HIDPPTransportStatistics statistics_;
    /// There while the link is open.
    std::unique_ptr<HIDPPSendQueue> sendQueue_;
};

}  // namespace tessara
