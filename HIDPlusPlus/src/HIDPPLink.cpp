#include "HIDPlusPlus/HIDPPLink.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "HIDPPSendQueue.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "HIDPlusPlus/HIDPPWire.h"
#include "Platform/HIDTransport.h"

namespace tessara {

namespace {

/// As many keys as there are software ids: by the time one is forgotten the rotation has gone
/// round.
constexpr std::size_t retiredKeyLimit = 15;

/// After a timeout the device gets this long to emit its late reply before it is asked again.
constexpr double cooldownMillis = 30;

/// Only the two protocol reports are of interest; they differ in the lowest bit of the id.
bool isProtocolReport(std::span<const std::uint8_t> report) {
    return report.size() >= HIDPPWire::headerLength &&
           (report[0] & 0xFE) == HIDPPWire::shortReportID;
}

std::unique_ptr<DispatchTimer> startOneShot(DispatchQueue& queue, double delayMillis,
                                            std::move_only_function<void()> handler) {
    const auto deadline = queue.clock().now() + nanosecondsFromMillis(delayMillis);
    // The handler ends the timer, so the interval is never reached.
    return queue.startTimer(deadline, std::chrono::hours(24), std::chrono::nanoseconds::zero(),
                            std::move(handler));
}

}  // namespace

HIDPPLink::HIDPPLink(std::shared_ptr<const HIDPPRunLoop> runLoop,
                     std::shared_ptr<HIDInterface> interface)
    : runLoop_(std::move(runLoop)),
      interface_(std::move(interface)),
      identity_(HIDPPDeviceIdentity::from(interface_->properties())),
      registryID_(interface_->registryID()) {}

HIDPPLink::~HIDPPLink() = default;

std::expected<void, HIDPPError> HIDPPLink::open() {
    if (isOpen_) return {};
    if (const auto code = interface_->open(); code != IOReturn::success) {
        return std::unexpected(HIDPPError::from(code, "IOHIDDeviceOpen"));
    }
    isOpen_ = true;
    sendQueue_ = runLoop_->makeSendQueue();
    interface_->startInput(
        runLoop_->queue(),
        [weakLink = weak_from_this()](std::uint8_t reportID, std::span<const std::uint8_t> bytes) {
            if (const auto link = weakLink.lock()) link->receive(reportID, bytes);
        });
    return {};
}

void HIDPPLink::enqueue(Request request, Completion completion) {
    if (!isOpen_) {
        completion(std::unexpected(HIDPPError::NotOpen{}));
        return;
    }
    const auto softwareID = HIDPPWire::softwareIDAfter(lastSoftwareID_);
    auto report =
        HIDPPWire::encodeRequest(request.deviceIndex, request.featureIndex, request.function,
                                 request.parameters, request.isLong, softwareID);
    if (!report) {
        completion(std::unexpected(std::move(report.error())));
        return;
    }
    lastSoftwareID_ = softwareID;
    queue_.push_back({.id = nextRequestID_++,
                      .key = {request.deviceIndex, request.featureIndex,
                              HIDPPWire::functionByte(request.function, softwareID)},
                      .report = std::move(*report),
                      .timeout = request.timeout,
                      .label = std::move(request.label),
                      .completion = std::move(completion)});
    statistics_.peakQueueDepth =
        std::max(statistics_.peakQueueDepth, static_cast<std::int64_t>(queue_.size()));
    pump();
}

void HIDPPLink::close() {
    end(HIDPPError::NotConnected{});
}

void HIDPPLink::invalidate() {
    end(HIDPPError::DeviceRemoved{});
}

void HIDPPLink::receive(std::uint8_t reportID, std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return;
    if (bytes.front() == reportID) {
        handleInputReport(bytes);
        return;
    }
    std::vector<std::uint8_t> report;
    report.reserve(1 + bytes.size());
    report.push_back(reportID);
    report.insert(report.end(), bytes.begin(), bytes.end());
    handleInputReport(report);
}

void HIDPPLink::handleInputReport(std::span<const std::uint8_t> report) {
    if (!isProtocolReport(report)) return;
    const auto featureIndex = report[2];
    const bool mayBeError = report.size() >= HIDPPWire::errorReplyLength;
    const bool isError10 = mayBeError && featureIndex == HIDPPWire::errorFeatureIndex10;
    const bool isError20 = mayBeError && featureIndex == HIDPPWire::errorFeatureIndex20;
    const bool isOrdinary = !isError10 && !isError20;
    const auto key = isOrdinary ? TransactionKey{report[1], featureIndex, report[3]}
                                : TransactionKey{report[1], report[3], report[4]};

    // A key is never retired and in flight at once; see pump().
    if (std::ranges::find(retiredKeys_, key) != retiredKeys_.end()) {
        statistics_.staleRepliesDropped += 1;
        return;
    }
    const auto payload = report.subspan(HIDPPWire::headerLength);
    if (inFlight_ && queue_.front().key == key) {
        statistics_.repliesMatched += 1;
        if (isError20) {
            finishHead(std::unexpected(HIDPPError::Protocol20{{report[5]}}));
        } else if (isError10) {
            finishHead(std::unexpected(HIDPPError::Protocol10{report[5]}));
        } else {
            finishHead(std::vector(payload.begin(), payload.end()));
        }
        return;
    }
    if (isOrdinary && (report[3] & 0x0F) == 0) {
        statistics_.notificationsDelivered += 1;
        if (notificationHandler_) {
            notificationHandler_(featureIndex, report[3],
                                 std::vector(payload.begin(), payload.end()));
        }
        return;
    }
    statistics_.unmatchedReportsDropped += 1;
}

void HIDPPLink::pump() {
    if (inFlight_ || cooldownTimer_ || queue_.empty()) return;
    if (!isOpen_) {
        failAll(HIDPPError::NotOpen{});
        return;
    }
    inFlight_ = true;
    const auto& head = queue_.front();
    // The software ids have gone round and this key is wanted again.
    std::erase(retiredKeys_, head.key);
    statistics_.requestsSent += 1;
    // Started before the write, so that the timeout includes the time the write takes.
    startTimeout(head);
    send(head);
}

void HIDPPLink::send(const PendingRequest& request) {
    // Nothing that must not end on the send queue is held by it: the link is only looked at, and
    // the link queue outlives the send queue by itself.
    sendQueue_->post([weakLink = weak_from_this(), interface = interface_,
                      linkQueue = runLoop_->queue().get(), report = request.report,
                      requestID = request.id] {
        if (weakLink.expired()) return;
        const auto code = interface->writeReport(report.front(), report);
        if (code == IOReturn::success) return;
        linkQueue->post([weakLink, requestID, code] {
            if (const auto link = weakLink.lock()) link->handleSendFailure(requestID, code);
        });
    });
}

void HIDPPLink::startTimeout(const PendingRequest& request) {
    cancelTimers();
    timer_ = startOneShot(*runLoop_->queue(), request.timeout * 1000,
                          [weakLink = weak_from_this(), requestID = request.id] {
                              if (const auto link = weakLink.lock()) link->handleTimeout(requestID);
                          });
}

void HIDPPLink::startCooldown() {
    cooldownTimer_ =
        startOneShot(*runLoop_->queue(), cooldownMillis, [weakLink = weak_from_this()] {
            const auto link = weakLink.lock();
            if (!link) return;
            link->cooldownTimer_ = nullptr;
            link->pump();
        });
}

void HIDPPLink::handleTimeout(std::uint64_t requestID) {
    if (!isInFlight(requestID)) return;
    auto head = takeHead();
    startCooldown();
    head.completion(std::unexpected(HIDPPError::Timeout{std::move(head.label)}));
}

void HIDPPLink::handleSendFailure(std::uint64_t requestID, IOReturn code) {
    if (!isInFlight(requestID)) return;
    finishHead(std::unexpected(HIDPPError::from(code, "IOHIDDeviceSetReport")));
}

bool HIDPPLink::isInFlight(std::uint64_t requestID) const {
    return inFlight_ && queue_.front().id == requestID;
}

HIDPPLink::PendingRequest HIDPPLink::takeHead() {
    auto head = std::move(queue_.front());
    queue_.pop_front();
    inFlight_ = false;
    retire(head.key);
    cancelTimers();
    return head;
}

void HIDPPLink::finishHead(Reply outcome) {
    auto head = takeHead();
    head.completion(std::move(outcome));
    pump();
}

void HIDPPLink::retire(const TransactionKey& key) {
    if (std::ranges::find(retiredKeys_, key) != retiredKeys_.end()) return;
    retiredKeys_.push_back(key);
    if (retiredKeys_.size() > retiredKeyLimit) retiredKeys_.pop_front();
}

void HIDPPLink::cancelTimers() {
    timer_ = nullptr;
    cooldownTimer_ = nullptr;
}

void HIDPPLink::failAll(const HIDPPError& error) {
    auto failed = std::exchange(queue_, {});
    inFlight_ = false;
    retiredKeys_.clear();
    for (auto& request : failed)
        request.completion(std::unexpected(error));
}

void HIDPPLink::end(const HIDPPError& error) {
    const bool wasOpen = std::exchange(isOpen_, false);
    cancelTimers();
    failAll(error);
    if (!wasOpen) return;
    interface_->close();
    runLoop_->retire(std::move(sendQueue_));
}

}  // namespace tessara
