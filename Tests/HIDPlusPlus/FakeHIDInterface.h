#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "Platform/HIDTransport.h"

namespace tessara {

/// An interface whose other end is the test: it keeps what is written and delivers what it is told.
class FakeHIDInterface final : public HIDInterface,
                               public std::enable_shared_from_this<FakeHIDInterface> {
  public:
    using Bytes = std::vector<std::uint8_t>;

    FakeHIDInterface() { described.usagePairs.push_back({0xFF00, 1}); }

    // Set before the interface is in use, or on the queue that listens.
    HIDInterfaceProperties described{.vendorID = 0x046D,
                                     .productID = 0xC099,
                                     .product = "Gaming Mouse",
                                     .maxInputReportSize = 20,
                                     .maxOutputReportSize = 20};
    std::uint64_t id = 77;
    IOReturn openResult = IOReturn::success;
    IOReturn writeResult = IOReturn::success;
    /// Runs inside each write that is taken, on the writer's queue. It may yet change the result.
    std::function<void(const Bytes& report)> onWrite;

    bool isOpen = false;
    bool isGone = false;
    int openCount = 0;
    int closeCount = 0;
    std::vector<Bytes> written;

    bool isListenedTo() const { return static_cast<bool>(handler_); }

    /// Delivers a report now; on the queue that listens.
    void deliver(std::uint8_t reportID, const Bytes& bytes) {
        if (handler_) handler_(reportID, bytes);
    }

    /// Delivers a whole report, with its id as the first byte.
    void deliver(const Bytes& report) { deliver(report.at(0), report); }

    /// Delivers a whole report on the queue that listens, as soon as it comes to that. Any thread.
    void deliverLater(DispatchQueue& queue, Bytes report) {
        queue.post([weakInterface = weak_from_this(), report = std::move(report)] {
            const auto interface = weakInterface.lock();
            if (interface && !interface->isGone) interface->deliver(report);
        });
    }

    const HIDInterfaceProperties& properties() const noexcept override { return described; }
    std::uint64_t registryID() const noexcept override { return id; }

    IOReturn open() override {
        ++openCount;
        if (isGone) return IOReturn::noDevice;
        isOpen = openResult == IOReturn::success;
        return openResult;
    }

    void close() override {
        stopInput();
        isOpen = false;
        ++closeCount;
    }

    void startInput(std::shared_ptr<DispatchQueue>, InputHandler handler) override {
        handler_ = std::move(handler);
    }

    void stopInput() override { handler_ = nullptr; }

    IOReturn writeReport(std::uint8_t reportID, std::span<const std::uint8_t> report) override {
        if (isGone) return IOReturn::noDevice;
        if (!isOpen) return IOReturn::notOpen;
        if (report.empty() || report.front() != reportID) return IOReturn::badArgument;
        if (writeResult != IOReturn::success) return writeResult;
        const Bytes taken(report.begin(), report.end());
        written.push_back(taken);
        if (onWrite) onWrite(taken);
        return writeResult;
    }

  private:
    InputHandler handler_;
};

}  // namespace tessara
