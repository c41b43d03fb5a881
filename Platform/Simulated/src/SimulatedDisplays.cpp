#include "Platform/Simulated/SimulatedDisplays.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessara {
namespace {

/// The nearest whole pixel of the display.
CGPoint pulledInto(const CGRect& bounds, CGPoint point) {
    const auto pull = [](double value, double low, double high) {
        return std::max(low, std::min(value, high - 1));
    };
    return {.x = pull(point.x, bounds.minX(), bounds.maxX()),
            .y = pull(point.y, bounds.minY(), bounds.maxY())};
}

}  // namespace

SimulatedDisplays::SimulatedDisplays() {
    arrange({CGRect{.x = 0, .y = 0, .width = 1920, .height = 1080}});
    moveCursor({.x = 960, .y = 540});
}

void SimulatedDisplays::arrange(const std::vector<CGRect>& displays) {
    MutexLock lock(mutex_);
    displays_.clear();
    for (const auto& bounds : displays)
        displays_.push_back({.id = ++lastID_, .bounds = bounds});
    cursor_ = nearestReachableLocked(cursor_);
}

CGPoint SimulatedDisplays::cursor() const {
    MutexLock lock(mutex_);
    return cursor_;
}

void SimulatedDisplays::moveCursor(CGPoint target) {
    MutexLock lock(mutex_);
    cursor_ = nearestReachableLocked(target);
}

CGPoint SimulatedDisplays::nearestReachable(CGPoint point) const {
    MutexLock lock(mutex_);
    return nearestReachableLocked(point);
}

CGPoint SimulatedDisplays::nearestReachableLocked(CGPoint point) const {
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) return cursor_;
    CGPoint nearest = cursor_;
    double shortest = std::numeric_limits<double>::infinity();
    for (const auto& display : displays_) {
        if (display.bounds.contains(point)) return point;
        if (display.bounds.isEmpty()) continue;
        const auto candidate = pulledInto(display.bounds, point);
        const double distance = std::hypot(candidate.x - point.x, candidate.y - point.y);
        if (distance < shortest) {
            shortest = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

void SimulatedDisplays::refuseWarps(std::int64_t count) {
    warps_.refuseNext(count);
}

void SimulatedDisplays::refuseDisplayQueries(std::int64_t count) {
    queries_.refuseNext(count);
}

bool SimulatedDisplays::warp(CGPoint target) {
    if (warps_.refuses()) return false;
    moveCursor(target);
    return true;
}

std::optional<std::size_t> SimulatedDisplays::displaysWithPoint(CGPoint point,
                                                                std::span<DisplayID> found) {
    return list(found, [point](const CGRect& bounds) { return bounds.contains(point); });
}

std::optional<std::size_t> SimulatedDisplays::activeDisplays(std::span<DisplayID> found) {
    return list(found, [](const CGRect&) { return true; });
}

template <typename Condition>
std::optional<std::size_t> SimulatedDisplays::list(std::span<DisplayID> found, Condition holds) {
    if (queries_.refuses()) return std::nullopt;
    MutexLock lock(mutex_);
    std::size_t count = 0;
    for (const auto& display : displays_) {
        if (count == found.size()) break;
        if (holds(display.bounds)) found[count++] = display.id;
    }
    return count;
}

CGRect SimulatedDisplays::displayBounds(DisplayID display) {
    MutexLock lock(mutex_);
    const auto found = std::ranges::find(displays_, display, &Display::id);
    return found == displays_.end() ? CGRect{} : found->bounds;
}

}  // namespace tessara
