#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDTransport.h"

namespace tessara {

class FileDescriptor;
class ReadableWatch;

/// A HID interface behind one of the kernel's hidraw nodes (Documentation/hid/hidraw.rst of the
/// kernel). The kernel goes on feeding the device's events to the desktop while it is open. Found
/// by `HidrawTransport`; not for finding anything.
class HidrawInterface final : public HIDInterface {
  public:
    struct Place {
        /// The device node: "/dev/hidraw3". Its name is given anew to another device once this one
        /// is gone.
        std::string node;
        /// The node's folder in /sys, there for exactly as long as this plug of the device lasts.
        std::string sysPath;
        /// Whether reports come with an id as their first byte.
        bool hasReportIDs = false;
    };

    /// How long a node that takes no report just now is given until a write fails. Hidraw nodes
    /// take each report at once, or block for the kernel's own five seconds at most.
    static constexpr std::chrono::milliseconds writePatience{1000};

    /// Opens nothing. `patience` is for tests. Any thread.
    HidrawInterface(HIDInterfaceProperties properties, std::uint64_t registryID, Place place,
                    std::chrono::milliseconds patience = writePatience);
    ~HidrawInterface() override;

    [[nodiscard]] const HIDInterfaceProperties& properties() const noexcept override;
    [[nodiscard]] std::uint64_t registryID() const noexcept override;
    [[nodiscard]] IOReturn open() override;
    void close() override;
    void startInput(std::shared_ptr<DispatchQueue> queue, InputHandler handler) override;
    void stopInput() override;
    [[nodiscard]] IOReturn writeReport(std::uint8_t reportID,
                                       std::span<const std::uint8_t> report) override;

  private:
    [[nodiscard]] bool isGone() const;
    [[nodiscard]] IOReturn failure(int errorNumber) const;
    [[nodiscard]] std::shared_ptr<const FileDescriptor> descriptor() const TESSARA_EXCLUDES(mutex_);

    const HIDInterfaceProperties properties_;
    const std::uint64_t registryID_;
    const Place place_;
    const std::chrono::milliseconds patience_;

    /// A write that is under way shares the descriptor, so that it is not closed under it.
    mutable Mutex mutex_;
    std::shared_ptr<const FileDescriptor> descriptor_ TESSARA_GUARDED_BY(mutex_);
    std::unique_ptr<ReadableWatch> input_;  // owned by the HID queue
};

}  // namespace tessara
