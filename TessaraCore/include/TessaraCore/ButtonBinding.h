#pragma once

#include <cstdint>

#include "TessaraCore/Action.h"
#include "TessaraCore/ModifierFlags.h"

namespace tessara {

/// What one button does, with certain modifiers held. Of several bindings of one button the router
/// chooses one at each press: see `ButtonRouter::action`.
///
/// The stored form is an object with the names of the fields as its keys, all required.
struct ButtonBinding {
    /// 0 left, 1 right, 2 middle, 3 and up the extra buttons. The user can choose those of
    /// `ButtonRouter::bindableButtons`; a document may name any.
    std::int64_t button = 0;
    /// The modifiers that must be held; only the normalized part counts, and more may be held.
    ModifierFlags modifiers = ModifierFlags::none;
    /// What the button does, from its press to its release.
    Action action = PassThroughAction{};
    /// A disabled binding is never chosen, and stays in the document.
    bool isEnabled = true;

    bool operator==(const ButtonBinding&) const = default;
};

}  // namespace tessara
