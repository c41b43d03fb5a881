#pragma once

#include <cstdint>

#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// One press or release of a button of the mouse.
struct ButtonEvent {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons.
    std::int64_t button = 0;
    bool isDown = false;
    /// The modifiers at the event as they came, Caps Lock included.
    ModifierFlags modifiers = ModifierFlags::none;
    /// On the one clock that the caller uses throughout.
    double timestampMillis = 0;

    /// A press, and a release.
    [[nodiscard]] static constexpr ButtonEvent down(std::int64_t button, double atMillis,
                                                    ModifierFlags modifiers = {}) {
        return {
            .button = button, .isDown = true, .modifiers = modifiers, .timestampMillis = atMillis};
    }
    [[nodiscard]] static constexpr ButtonEvent up(std::int64_t button, double atMillis,
                                                  ModifierFlags modifiers = {}) {
        return {
            .button = button, .isDown = false, .modifiers = modifiers, .timestampMillis = atMillis};
    }

    bool operator==(const ButtonEvent&) const = default;
};

}  // namespace tessara
