#pragma once

#include <cstdint>

#include "TessaraCore/Action.h"
#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// What one button does, with certain modifiers held.
struct ButtonBinding {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons.
    std::int64_t button = 0;
    /// The modifiers that must be held; only the normalized part counts, and more may be held.
    ModifierFlags modifiers = ModifierFlags::none;
    Action action = PassThroughAction{};
    /// A disabled binding is never chosen, and stays in the document.
    bool isEnabled = true;

    bool operator==(const ButtonBinding&) const = default;
};

}  // namespace tessara
