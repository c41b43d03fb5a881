#include "TessaraEngine/CGEventReaders.h"

#include <cmath>

#include "Platform/CGEvent.h"
#include "Platform/MouseEvents.h"
#include "TessaraEngine/CGEventFlags.h"
#include "TessaraEngine/MonotonicClock.h"

namespace tessara {

std::optional<ScrollInput> scrollInput(const CGEvent& event, DeviceID deviceID,
                                       const MonotonicClock& clock) {
    if (event.integerValue(CGEventField::scrollWheelEventIsContinuous) != 0) return std::nullopt;
    const auto vertical = event.integerValue(CGEventField::scrollWheelEventDeltaAxis1);
    const auto horizontal = event.integerValue(CGEventField::scrollWheelEventDeltaAxis2);
    if (vertical == 0 && horizontal == 0) return std::nullopt;
    const bool isVertical = vertical != 0;
    return ScrollInput{.lineDelta = isVertical ? vertical : horizontal,
                       .axis = isVertical ? ScrollAxis::vertical : ScrollAxis::horizontal,
                       .modifiers = modifierFlags(event.flags),
                       .timestampMillis = clock.timestamp(event),
                       .deviceID = deviceID};
}

std::optional<ButtonEvent> buttonEvent(const CGEvent& event, const MonotonicClock& clock) {
    const auto change = mouseButtonChange(event);
    if (!change) return std::nullopt;
    return ButtonEvent{.button = change->button,
                       .isDown = change->isDown,
                       .modifiers = modifierFlags(event.flags),
                       .timestampMillis = clock.timestamp(event)};
}

std::optional<PointerMotion> pointerMotion(const CGEvent& event, DeviceID deviceID,
                                           MotionSource source, const MonotonicClock& clock) {
    PointerDelta delta;
    if (source == MotionSource::unaccelerated) {
        delta.dx = event.doubleValue(CGEventField::unacceleratedPointerMovementX);
        delta.dy = event.doubleValue(CGEventField::unacceleratedPointerMovementY);
    } else {
        delta.dx = static_cast<double>(event.integerValue(CGEventField::mouseEventDeltaX));
        delta.dy = static_cast<double>(event.integerValue(CGEventField::mouseEventDeltaY));
    }
    if (!std::isfinite(delta.dx) || !std::isfinite(delta.dy) || delta.isZero()) return std::nullopt;
    return PointerMotion{
        .delta = delta, .timestampMillis = clock.timestamp(event), .deviceID = deviceID};
}

}  // namespace tessara
