#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// Resolution of the sensor, in dots per inch: counts that the mouse reports for an inch of the
/// hand's way. On the wire a resolution has 16 bits.

namespace tessara {

/// The resolutions that a sensor can be set to.
struct HIDPPDPIRange {
    /// All values from `minimum` on in steps of `step`, and `maximum`.
    struct Range {
        std::int64_t minimum;
        std::int64_t maximum;
        std::int64_t step;
        bool operator==(const Range&) const = default;
    };
    /// Exactly these values, in the device's order.
    struct List {
        std::vector<std::int64_t> values;
        bool operator==(const List&) const = default;
    };

    /// Which of the two a sensor has is its own affair; both come in one form on the wire.
    std::variant<Range, List> value;

    /// The bounds; of a list its smallest and its largest value, 0 when it is empty.
    std::int64_t minimum() const;
    std::int64_t maximum() const;

    /// The value nearest to `dpi` that the device takes. In a range halves go up and the maximum is
    /// not exceeded; in a list the earlier of two equally near values wins. An empty list leaves
    /// `dpi` as it is.
    std::int64_t normalize(std::int64_t dpi) const;

    /// Whether the device takes `dpi` as it is.
    bool contains(std::int64_t dpi) const { return normalize(dpi) == dpi; }

    /// Such as "200–25600 step 50", or the values of a list.
    std::string description() const;

    bool operator==(const HIDPPDPIRange&) const = default;
};

/// What a sensor is set to.
struct HIDPPDPIState {
    std::uint8_t sensorIndex = 0;
    std::int64_t current = 0;
    /// What the mouse calls its default.
    std::int64_t default_ = 0;

    /// All fields in one line.
    std::string description() const;

    bool operator==(const HIDPPDPIState&) const = default;
};

}  // namespace tessara
