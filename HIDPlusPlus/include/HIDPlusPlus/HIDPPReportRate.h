#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessara {

/// How often the mouse reports its motion, kept as the protocol has it: the interval in whole
/// milliseconds. Faster rates than 1000 Hz cannot be said so.
struct HIDPPReportRate {
    /// Between two reports.
    std::int64_t milliseconds = 0;

    /// The rate of `hertz` reports a second, or nothing when that is no whole number of
    /// milliseconds.
    static std::optional<HIDPPReportRate> fromHertz(std::int64_t hertz);

    /// Reports a second, rounded down; 0 for an interval under 1 ms.
    std::int64_t hertz() const;

    /// Such as "1000 Hz (1 ms)".
    std::string description() const;

    bool operator==(const HIDPPReportRate&) const = default;
};

/// The report rates of a mouse.
struct HIDPPReportRateInfo {
    /// Bit i, from 0, stands for an interval of i + 1 ms.
    std::uint8_t bitmap = 0;
    /// What the mouse runs at; 0 ms when it says so, though that is no rate.
    HIDPPReportRate current = {};

    /// The rates the mouse can be set to, the shortest interval first.
    std::vector<HIDPPReportRate> supported() const;

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPReportRateInfo&) const = default;
};

}  // namespace tessara
