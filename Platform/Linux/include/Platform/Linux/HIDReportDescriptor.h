#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <vector>

#include "Platform/HIDTransport.h"

namespace tessara {

/// Why bytes are no report descriptor.
struct HIDReportDescriptorError {
    /// Where the item that cannot be begins, in bytes; the length of the descriptor when it is the
    /// end that comes too early.
    std::size_t offset = 0;
    /// "a collection ends that never began".
    std::string what;

    /// "byte 12 of the report descriptor: a collection ends that never began".
    [[nodiscard]] std::string description() const;

    bool operator==(const HIDReportDescriptorError&) const = default;
};

/// What a HID report descriptor says of an interface as a whole: what it is for, and how long its
/// reports get. Not for taking reports apart: where a field lies within one is not kept. The form
/// is that of the "Device Class Definition for Human Interface Devices" 1.11, chapter 6.2.2, as the
/// kernel shows it in the device's `report_descriptor` in /sys.
///
/// The bytes come from a device and are believed in nothing. Reading takes time and memory in
/// proportion to their number, whatever counts they claim.
struct HIDReportDescriptor {
    /// The longest report, its id not counted, that a descriptor may define: in bytes, the kernel's
    /// limit.
    static constexpr std::int64_t maxReportSize = 16384;

    /// The usages of all application collections, in order, nested ones where they begin; the first
    /// is the primary one. A collection without a usage has usage 0.
    std::vector<HIDUsagePair> applicationCollections;
    /// Whether every report begins with an id.
    bool hasReportIDs = false;
    /// Bytes of the longest report in each direction, the id included where there are ids; 0 where
    /// there is no report.
    std::int64_t maxInputReportSize = 0;
    std::int64_t maxOutputReportSize = 0;

    /// Reads a whole descriptor. Fails on an item that is cut short, collections or a stack that do
    /// not balance, an impossible report id, and a report above `maxReportSize`; what is reserved
    /// or of no interest here is skipped. Any thread.
    [[nodiscard]] static std::expected<HIDReportDescriptor, HIDReportDescriptorError> parse(
        std::span<const std::uint8_t> bytes);

    bool operator==(const HIDReportDescriptor&) const = default;
};

}  // namespace tessara
