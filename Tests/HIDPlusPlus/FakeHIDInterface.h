#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "Platform/HIDTransport.h"

namespace tessara {

/// An interface whose other end is the test: it keeps what is written and delivers what it is told.
/// Everything happens at once, on the caller's queue.
class FakeHIDInterface final : public HIDInterface {
  public:
    HIDInterfaceProperties described{.vendorID = 0x046D,
                                     .productID = 0xC099,
                                     .maxInputReportSize = 20,
                                     .maxOutputReportSize = 20,
                                     .usagePairs = {{0xFF00, 1}}};
    IOReturn openResult = IOReturn::success;
    IOReturn writeResult = IOReturn::success;
    bool isOpen = false;
    int closeCount = 0;
    std::vector<std::vector<std::uint8_t>> written;
    /// Runs inside each write, after the report was kept.
    std::function<void(const std::vector<std::uint8_t>& report)> onWrite;

    bool isListenedTo() const { return static_cast<bool>(handler_); }

    void deliver(std::uint8_t reportID, const std::vector<std::uint8_t>& bytes) {
        if (handler_) handler_(reportID, bytes);
    }

    /// Delivers a whole report, with its id as the first byte.
    void deliver(const std::vector<std::uint8_t>& report) { deliver(report.at(0), report); }

    const HIDInterfaceProperties& properties() const noexcept override { return described; }
    std::uint64_t registryID() const noexcept override { return 77; }

    IOReturn open() override {
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
        if (!isOpen) return IOReturn::notOpen;
        if (report.empty() || report.front() != reportID) return IOReturn::badArgument;
        if (writeResult != IOReturn::success) return writeResult;
        written.emplace_back(report.begin(), report.end());
        if (onWrite) onWrite(written.back());
        return IOReturn::success;
    }

  private:
    InputHandler handler_;
};

}  // namespace tessara
