#pragma once

#include <cstdint>

#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// One press or release of a button of the mouse, as the hand makes it; what the program itself
/// posts is told by `ButtonIntent`. A press and its release need not be of the same modifiers, and
/// a release need not have a press: the stream of events may begin or break off anywhere.
struct ButtonEvent {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons.
    std::int64_t button = 0;
    /// Whether it is a press; a release otherwise.
    bool isDown = false;
    /// The modifiers at the event as they came, Caps Lock included.
    ModifierFlags modifiers = ModifierFlags::none;
    /// In milliseconds, on the one clock that the caller uses throughout.
    double timestampMillis = 0;

    /// A press of `button` at `atMillis`.
    [[nodiscard]] static constexpr ButtonEvent down(std::int64_t button, double atMillis,
                                                    ModifierFlags modifiers = {}) {
        return {
            .button = button, .isDown = true, .modifiers = modifiers, .timestampMillis = atMillis};
    }
    /// A release of `button` at `atMillis`.
    [[nodiscard]] static constexpr ButtonEvent up(std::int64_t button, double atMillis,
                                                  ModifierFlags modifiers = {}) {
        return {
            .button = button, .isDown = false, .modifiers = modifiers, .timestampMillis = atMillis};
    }

    bool operator==(const ButtonEvent&) const = default;
};

}  // namespace tessara
