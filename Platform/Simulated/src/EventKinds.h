#pragma once

#include <cstdint>

#include "Platform/CGEvent.h"

namespace tessara {

/// The types by which buttons go down and up and motion is reported.
struct MouseEventTypes {
    CGEventType down;
    CGEventType up;
    CGEventType dragged;
};

/// The types for a button by its number: 0 left, 1 right, any other.
[[nodiscard]] constexpr MouseEventTypes mouseEventTypes(std::int64_t button) {
    switch (button) {
        case 0:
            return {.down = CGEventType::leftMouseDown,
                    .up = CGEventType::leftMouseUp,
                    .dragged = CGEventType::leftMouseDragged};
        case 1:
            return {.down = CGEventType::rightMouseDown,
                    .up = CGEventType::rightMouseUp,
                    .dragged = CGEventType::rightMouseDragged};
        default:
            return {.down = CGEventType::otherMouseDown,
                    .up = CGEventType::otherMouseUp,
                    .dragged = CGEventType::otherMouseDragged};
    }
}

/// Whether it is a button or drag event: those that may name their sender in a field.
[[nodiscard]] constexpr bool isButtonOrDragEvent(CGEventType type) {
    switch (type) {
        case CGEventType::leftMouseDown:
        case CGEventType::leftMouseUp:
        case CGEventType::rightMouseDown:
        case CGEventType::rightMouseUp:
        case CGEventType::leftMouseDragged:
        case CGEventType::rightMouseDragged:
        case CGEventType::otherMouseDown:
        case CGEventType::otherMouseUp:
        case CGEventType::otherMouseDragged:
            return true;
        default:
            return false;
    }
}

/// Whether the cursor is where the event says.
[[nodiscard]] constexpr bool isMouseEvent(CGEventType type) {
    return type == CGEventType::mouseMoved || isButtonOrDragEvent(type);
}

}  // namespace tessara
