#include "TessaraEngine/CGEventFlags.h"

#include <array>

#include "Platform/CGEvent.h"

namespace tessara {
namespace {

struct Correspondence {
    ModifierFlags modifier;
    std::uint64_t flag = 0;
};

constexpr std::array<Correspondence, 6> correspondences{{
    {.modifier = ModifierFlags::capsLock, .flag = CGEventFlagMask::alphaShift},
    {.modifier = ModifierFlags::shift, .flag = CGEventFlagMask::shift},
    {.modifier = ModifierFlags::control, .flag = CGEventFlagMask::control},
    {.modifier = ModifierFlags::option, .flag = CGEventFlagMask::alternate},
    {.modifier = ModifierFlags::command, .flag = CGEventFlagMask::command},
    {.modifier = ModifierFlags::function, .flag = CGEventFlagMask::secondaryFn},
}};

}  // namespace

ModifierFlags modifierFlags(std::uint64_t cgEventFlags) {
    ModifierFlags modifiers;
    for (const Correspondence& pair : correspondences) {
        if ((cgEventFlags & pair.flag) != 0) modifiers.insert(pair.modifier);
    }
    return modifiers;
}

std::uint64_t cgEventFlags(ModifierFlags modifiers) {
    std::uint64_t flags = 0;
    for (const Correspondence& pair : correspondences) {
        if (modifiers.contains(pair.modifier)) flags |= pair.flag;
    }
    return flags;
}

}  // namespace tessara
