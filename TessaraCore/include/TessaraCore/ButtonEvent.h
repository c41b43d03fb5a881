#pragma once

#include <cstdint>

#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// One press or release of a button of the mouse.
struct ButtonEvent {
    std::int64_t button = 0;
    bool isDown = false;
    ModifierFlags modifiers = ModifierFlags::none;
    /// On the one clock that the caller uses throughout.
    double timestampMillis = 0;

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
