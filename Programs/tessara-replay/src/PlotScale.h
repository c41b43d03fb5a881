#pragma once

#include <vector>

namespace tessara {

/// Maps a range of values to a stretch of the picture.
struct PlotScale {
    double from = 0;
    double to = 1;
    double fromPixel = 0;
    double toPixel = 1;

    [[nodiscard]] double operator()(double value) const {
        return fromPixel + (value - from) / (to - from) * (toPixel - fromPixel);
    }
};

/// The distance between the marks of an axis, a 1, 2 or 5 with zeros, that puts about `count` of
/// them on a range of `span` (above 0).
[[nodiscard]] double tickDistance(double span, int count);

/// All multiples of `distance` within the range.
[[nodiscard]] std::vector<double> ticksWithin(double from, double to, double distance);

}  // namespace tessara
