#include "Platform/Linux/ScrollToDetents.h"

#include <algorithm>
#include <limits>

namespace tessara {
namespace {

constexpr std::int64_t maximumPixels =
    std::int64_t{std::numeric_limits<std::int32_t>::max() / unitsPerDetent} * pixelsPerDetent;

}  // namespace

ScrollToDetents::Turn ScrollToDetents::advance(std::int64_t pixels) {
    const std::int64_t limited = std::clamp(pixels, -maximumPixels, maximumPixels);
    noteDirection(limited);

    const std::int64_t parts = unitRemainder_ + limited * unitsPerDetent;
    const std::int64_t units = parts / pixelsPerDetent;
    unitRemainder_ = parts % pixelsPerDetent;

    const std::int64_t sinceLine = lineRemainder_ + units;
    lineRemainder_ = sinceLine % unitsPerDetent;
    return {.units = static_cast<std::int32_t>(units),
            .lines = static_cast<std::int32_t>(sinceLine / unitsPerDetent)};
}

void ScrollToDetents::noteDirection(std::int64_t signedAmount) {
    const auto isAgainst = [signedAmount](std::int64_t remainder) {
        return (remainder < 0 && signedAmount > 0) || (remainder > 0 && signedAmount < 0);
    };
    if (!isAgainst(unitRemainder_) && !isAgainst(lineRemainder_)) return;
    unitRemainder_ = 0;
    lineRemainder_ = 0;
}

}  // namespace tessara
