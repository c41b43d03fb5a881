#pragma once

#include <cstdint>

#include "TessaraCore/ModifierFlags.h"

/// The one place where the model's modifiers and the system's event flags meet. One bit becomes one
/// bit, both ways.
namespace tessara {

/// The modifiers that an event's flags show. The numeric pad, the help key and the bits of single
/// physical keys have no counterpart and are dropped.
[[nodiscard]] ModifierFlags modifierFlags(std::uint64_t cgEventFlags);

/// The generic flags (`CGEventFlagMask`) of the modifiers; nothing else is set.
[[nodiscard]] std::uint64_t cgEventFlags(ModifierFlags modifiers);

}  // namespace tessara
