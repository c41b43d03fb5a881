#pragma once

#include <cstdint>
#include <optional>

#include "Platform/CGEvent.h"

/// How button events tell of their button, in the types and in the field of the number: read and
/// written by everybody who deals with buttons, platforms included. Nothing here keeps a state; any
/// thread.

namespace tessara {

/// The event types of one mouse button.
struct MouseEventTypes {
    CGEventType down;
    CGEventType up;
    CGEventType dragged;
};

/// The types for a button by its number: 0 the left one, 1 the right one, all others share theirs
/// and are told apart by the field of the number.
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

/// What a button event says.
struct MouseButtonChange {
    /// The number, 0 for the left button; of other buttons whatever the event's field holds.
    std::int64_t button = 0;
    bool isDown = false;
};

/// Reads a button event; nothing for an event of any other type, drags included.
[[nodiscard]] inline std::optional<MouseButtonChange> mouseButtonChange(const CGEvent& event) {
    switch (event.type) {
        case CGEventType::leftMouseDown:
        case CGEventType::leftMouseUp:
            return MouseButtonChange{.button = 0,
                                     .isDown = event.type == CGEventType::leftMouseDown};
        case CGEventType::rightMouseDown:
        case CGEventType::rightMouseUp:
            return MouseButtonChange{.button = 1,
                                     .isDown = event.type == CGEventType::rightMouseDown};
        case CGEventType::otherMouseDown:
        case CGEventType::otherMouseUp:
            return MouseButtonChange{
                .button = event.integerValue(CGEventField::mouseEventButtonNumber),
                .isDown = event.type == CGEventType::otherMouseDown};
        default:
            return std::nullopt;
    }
}

/// Whether the type is that of a button going down or up, or of a drag: the events that name their
/// sender in a field of their own on some systems.
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

}  // namespace tessara
