#include "TessaraEngine/CGEventReaders.h"

#include <cmath>

#include "Platform/CGEvent.h"
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
    const auto read = [&](std::int64_t button, bool isDown) {
        return ButtonEvent{.button = button,
                           .isDown = isDown,
                           .modifiers = modifierFlags(event.flags),
                           .timestampMillis = clock.timestamp(event)};
    };
    switch (event.type) {
        case CGEventType::leftMouseDown:
            return read(0, true);
        case CGEventType::leftMouseUp:
            return read(0, false);
        case CGEventType::rightMouseDown:
            return read(1, true);
        case CGEventType::rightMouseUp:
            return read(1, false);
        case CGEventType::otherMouseDown:
            return read(event.integerValue(CGEventField::mouseEventButtonNumber), true);
        case CGEventType::otherMouseUp:
            return read(event.integerValue(CGEventField::mouseEventButtonNumber), false);
        default:
            return std::nullopt;
    }
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
