#pragma once

#include <cstdint>

#include "TessaraCore/OptionSet.h"

namespace tessara {

/// The modifier keys held at an event, or asked for by a binding.
///
/// Plain bits, not tied to the flags of any platform; the engine converts. Caps Lock is carried
/// because events carry it, but it is a state and not a chord: compare the `normalized` form when
/// you choose by modifiers.
///
/// Its stored form is the number of its bits, 0 to 4294967295. Bits without a name are kept.
class ModifierFlags : public OptionSet<ModifierFlags, std::uint32_t> {
  public:
    using OptionSet::OptionSet;

    // No flag says which of two like keys, left or right, is held.

    static const ModifierFlags none;      ///< the empty set
    static const ModifierFlags capsLock;  ///< 1; on, whether or not the key is held down
    static const ModifierFlags shift;     ///< 2
    static const ModifierFlags control;   ///< 4
    static const ModifierFlags option;    ///< 8; Alt on most keyboards
    static const ModifierFlags command;   ///< 16; Meta, the key with a logo, on most keyboards
    static const ModifierFlags function;  ///< 32; the Fn key
    /// The modifiers that a binding can ask for: all of the above but Caps Lock.
    static const ModifierFlags bindable;

    /// This set without Caps Lock and without bits that have no name: what bindings and activation
    /// modifiers are compared by.
    [[nodiscard]] constexpr ModifierFlags normalized() const;
};

inline constexpr ModifierFlags ModifierFlags::none{0U};
inline constexpr ModifierFlags ModifierFlags::capsLock{1U};
inline constexpr ModifierFlags ModifierFlags::shift{2U};
inline constexpr ModifierFlags ModifierFlags::control{4U};
inline constexpr ModifierFlags ModifierFlags::option{8U};
inline constexpr ModifierFlags ModifierFlags::command{16U};
inline constexpr ModifierFlags ModifierFlags::function{32U};
inline constexpr ModifierFlags ModifierFlags::bindable{62U};

constexpr ModifierFlags ModifierFlags::normalized() const {
    return *this & bindable;
}

}  // namespace tessara
