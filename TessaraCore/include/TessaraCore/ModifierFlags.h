#pragma once

#include <cstdint>

#include "TessaraCore/OptionSet.h"

namespace tessara {

/// The modifier keys held at an event, or asked for by a binding.
///
/// Plain bits, not tied to the flags of any platform; the engine converts. Caps Lock is carried
/// because events carry it, but it is a state and not a chord: compare the `normalized` form when
/// you choose by modifiers.
class ModifierFlags : public OptionSet<ModifierFlags, std::uint32_t> {
  public:
    using OptionSet::OptionSet;

    static const ModifierFlags none;
    static const ModifierFlags capsLock;
    static const ModifierFlags shift;
    static const ModifierFlags control;
    static const ModifierFlags option;
    static const ModifierFlags command;
    static const ModifierFlags function;  // the Fn key
    /// The modifiers that a binding can ask for: all of the above but Caps Lock.
    static const ModifierFlags bindable;

    /// This set without Caps Lock and without bits that have no name.
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
