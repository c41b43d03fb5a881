#include "TessaraEngine/CGPointerCursor.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "Platform/CursorService.h"
#include "Platform/EventServices.h"
#include "TessaraCore/Clamp.h"

namespace tessara {
namespace {

constexpr std::size_t displayLimit = 32;

std::unique_ptr<EventSource> makeSource(EventServices& services) {
    auto source = services.makeSource(EventSourceState::combinedSession);
    if (source) source->setLocalEventsSuppressionInterval(0.0);
    return source;
}

double squaredDistance(CGPoint a, CGPoint b) {
    const double dx = a.x - b.x;
    const double dy = a.y - b.y;
    return dx * dx + dy * dy;
}

}  // namespace

CGPointerCursor::CGPointerCursor(EventServices& services, CursorService& cursor)
    : services_(services), cursor_(cursor), source_(makeSource(services)) {}

CGPointerCursor::~CGPointerCursor() = default;

std::optional<CGPoint> CGPointerCursor::move(std::int64_t dx, std::int64_t dy) {
    if (!source_) return std::nullopt;
    const auto present = services_.makeEvent();
    if (!present) return std::nullopt;
    const auto target = onDisplay({.x = present->location.x + static_cast<double>(dx),
                                   .y = present->location.y + static_cast<double>(dy)});
    if (!target || !cursor_.warp(*target)) return std::nullopt;
    return target;
}

std::optional<CGPoint> CGPointerCursor::onDisplay(CGPoint point) {
    std::array<DisplayID, 1> holder{};
    if (cursor_.displaysWithPoint(point, holder).value_or(0) > 0) return point;

    std::array<DisplayID, displayLimit> displays{};
    const auto count = cursor_.activeDisplays(displays);
    if (!count) return std::nullopt;

    std::optional<CGPoint> nearest;
    double best = std::numeric_limits<double>::infinity();
    for (const DisplayID display : std::span(displays).first(std::min(*count, displayLimit))) {
        const CGRect bounds = cursor_.displayBounds(display);
        if (bounds.isEmpty()) continue;
        const CGPoint candidate{.x = clamp(point.x, bounds.minX(), bounds.maxX() - 1),
                                .y = clamp(point.y, bounds.minY(), bounds.maxY() - 1)};
        const double distance = squaredDistance(point, candidate);
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace tessara
