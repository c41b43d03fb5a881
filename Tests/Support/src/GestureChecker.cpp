#include "Support/GestureChecker.h"

#include <fmt/format.h>

namespace tessara::testing {

void GestureChecker::step(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase) {
    ++steps_;
    const auto fault = [&](const char* words) {
        faults_.push_back(fmt::format("step {} ({} {}px {}): {}", steps_, rawValue(axis),
                                      pixelDelta, rawValue(phase), words));
    };
    const bool wasOpen = open_.contains(axis);
    if (phase == ScrollPhase::began && wasOpen) fault("began while a gesture is open");
    if (phase != ScrollPhase::began && !wasOpen) fault("no gesture is open");
    if (phase == ScrollPhase::ended && pixelDelta != 0) fault("the end moves");
    if (phase != ScrollPhase::ended && pixelDelta == 0) fault("a step that does not move");
    if (phase == ScrollPhase::ended) {
        open_.erase(axis);
    } else {
        open_.insert(axis);
    }
}

}  // namespace tessara::testing
