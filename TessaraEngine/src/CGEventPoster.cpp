#include "TessaraEngine/CGEventPoster.h"

#include <algorithm>
#include <limits>

#include "Platform/EventServices.h"
#include "Platform/MouseEvents.h"
#include "TessaraCore/Precondition.h"
#include "TessaraEngine/CGEventFlags.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {
namespace {

std::int64_t fieldValue(ScrollPhase phase) {
    switch (phase) {
        case ScrollPhase::began:
            return 1;
        case ScrollPhase::changed:
            return 2;
        case ScrollPhase::ended:
            return 4;
    }
    preconditionFailed("a scroll phase that is none of the cases");
}

}  // namespace

CGEventPoster::CGEventPoster(EventServices& services, CGEventTapLocation postLocation)
    : services_(services), postLocation_(postLocation), keyboard_(services) {}

std::optional<CGEvent> CGEventPoster::makeScrollEvent(ScrollAxis axis, std::int64_t pixelDelta,
                                                      ScrollPhase phase,
                                                      ModifierFlags modifiers) const {
    using Wheel = std::numeric_limits<std::int32_t>;
    const auto source = TessaraEventTag::makeSource(services_);
    if (!source) return std::nullopt;

    const auto limited = static_cast<std::int32_t>(
        std::clamp(pixelDelta, std::int64_t{Wheel::min()}, std::int64_t{Wheel::max()}));
    const bool isVertical = axis == ScrollAxis::vertical;
    auto event = services_.makeScrollWheelEvent(*source, ScrollEventUnit::pixel,
                                                isVertical ? limited : 0, isVertical ? 0 : limited);
    if (!event) return std::nullopt;

    const std::int64_t vertical = isVertical ? pixelDelta : 0;
    const std::int64_t horizontal = isVertical ? 0 : pixelDelta;
    event->setIntegerValue(CGEventField::scrollWheelEventIsContinuous, 1);
    event->setIntegerValue(CGEventField::scrollWheelEventDeltaAxis1, 0);
    event->setIntegerValue(CGEventField::scrollWheelEventDeltaAxis2, 0);
    event->setIntegerValue(CGEventField::scrollWheelEventPointDeltaAxis1, vertical);
    event->setIntegerValue(CGEventField::scrollWheelEventPointDeltaAxis2, horizontal);
    event->setDoubleValue(CGEventField::scrollWheelEventFixedPtDeltaAxis1,
                          static_cast<double>(vertical));
    event->setDoubleValue(CGEventField::scrollWheelEventFixedPtDeltaAxis2,
                          static_cast<double>(horizontal));
    event->setIntegerValue(CGEventField::scrollWheelEventScrollPhase, fieldValue(phase));
    event->setIntegerValue(CGEventField::scrollWheelEventMomentumPhase, 0);
    event->flags = cgEventFlags(modifiers);
    tagAsTessaraEmitted(*event);
    return event;
}

void CGEventPoster::postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                                   ModifierFlags modifiers) {
    if (const auto event = makeScrollEvent(axis, pixelDelta, phase, modifiers))
        services_.post(*event, postLocation_);
}

void CGEventPoster::postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) {
    keyboard_.post(code, isDown, modifiers, postLocation_);
}

void CGEventPoster::postMouseButton(std::int64_t number, bool isDown) {
    const auto source = TessaraEventTag::makeSource(services_);
    if (!source) return;
    const auto present = services_.makeEvent();
    const CGPoint location = present ? present->location : CGPoint{};
    TESSARA_PRECONDITION(number <= std::int64_t{std::numeric_limits<std::uint32_t>::max()},
                         "a mouse button's number does not fit an event");
    const auto button = static_cast<std::uint32_t>(std::max<std::int64_t>(number, 0));
    const auto types = mouseEventTypes(number);
    auto event =
        services_.makeMouseEvent(*source, isDown ? types.down : types.up, location, button);
    if (!event) return;
    event->setIntegerValue(CGEventField::mouseEventButtonNumber, number);
    tagAsTessaraEmitted(*event);
    services_.post(*event, postLocation_);
}

}  // namespace tessara
