#include "TessaraEngine/KeyboardEventPoster.h"

#include <optional>

#include "Platform/EventServices.h"
#include "TessaraEngine/CGEventFlags.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {
namespace {

using Modifiers = std::bitset<modifierKeys.size()>;

std::optional<std::size_t> rowOf(std::uint16_t code) {
    const ModifierKey* key = findModifierKey(code);
    if (key == nullptr) return std::nullopt;
    return static_cast<std::size_t>(key - modifierKeys.data());
}

/// What events show while these keys are down.
std::uint64_t flagsFor(const Modifiers& down) {
    std::uint64_t flags = 0;
    for (std::size_t row = 0; row < down.size(); ++row) {
        const ModifierKey& key = modifierKeys[row];
        if (down[row]) flags |= key.familyFlag | key.deviceFlag;
    }
    return flags;
}

}  // namespace

KeyboardEventPoster::KeyboardEventPoster(EventServices& services) : services_(services) {}

KeyboardEventPoster::~KeyboardEventPoster() = default;

void KeyboardEventPoster::post(std::uint16_t code, bool isDown, ModifierFlags modifierFlags,
                               CGEventTapLocation location) {
    MutexLock lock(mutex_);
    if (!source_) source_ = TessaraEventTag::makeSource(services_);
    if (!source_) return;

    const Stroke stroke{
        .physical = physicalModifiers(location),
        .capsLock = services_.flagsState(EventSourceState::hidSystem) & CGEventFlagMask::alphaShift,
        .location = location};
    const bool isModifier = rowOf(code).has_value();
    if (isDown) {
        heldKeys_[code] = modifierFlags;
        synchronizeModifiers(stroke);
        if (!isModifier) postKey(code, true, modifierFlags, stroke);
        return;
    }
    const auto held = heldKeys_.find(code);
    if (!isModifier)
        postKey(code, false, held != heldKeys_.end() ? held->second : modifierFlags, stroke);
    if (held != heldKeys_.end()) heldKeys_.erase(held);
    synchronizeModifiers(stroke);
}

KeyboardEventPoster::ModifierSet KeyboardEventPoster::physicalModifiers(
    CGEventTapLocation location) const {
    ModifierSet physical;
    for (std::size_t row = 0; row < modifiers.size(); ++row)
        physical[row] = services_.keyState(EventSourceState::hidSystem, modifiers[row].code);
    // Posts at the HID location reach the state just read: what the program pressed shows there.
    return location == CGEventTapLocation::hid ? physical & ~synthesizedModifiers_ : physical;
}

KeyboardEventPoster::ModifierSet KeyboardEventPoster::desiredModifiers() const {
    ModifierSet desired;
    for (const auto& [code, modifierFlags] : heldKeys_) {
        std::uint64_t ownFamily = 0;
        if (const auto row = rowOf(code)) {
            desired.set(*row);
            ownFamily = modifiers[*row].familyFlag;
        }
        const std::uint64_t wanted = cgEventFlags(modifierFlags) & ~ownFamily;
        for (std::size_t row = 0; row < firstRightModifier; ++row) {
            if ((wanted & modifiers[row].familyFlag) != 0) desired.set(row);
        }
    }
    return desired;
}

void KeyboardEventPoster::synchronizeModifiers(const Stroke& stroke) {
    const ModifierSet desired = desiredModifiers();
    for (std::size_t row = modifiers.size(); row-- > 0;) {
        if (!heldModifiers_[row] || desired[row]) continue;
        const bool isSynthesized = synthesizedModifiers_[row];
        heldModifiers_.reset(row);
        synthesizedModifiers_.reset(row);
        if (!stroke.physical[row]) {
            postModifier(row, false, stroke);
        } else if (isSynthesized) {
            services_.leaveToUser(modifiers[row].code);
        }
    }
    for (std::size_t row = 0; row < modifiers.size(); ++row) {
        if (!desired[row] || heldModifiers_[row]) continue;
        heldModifiers_.set(row);
        if (stroke.physical[row]) continue;  // the user's finger is there already
        synthesizedModifiers_.set(row);
        postModifier(row, true, stroke);
    }
}

void KeyboardEventPoster::postModifier(std::size_t row, bool isDown, const Stroke& stroke) {
    auto event = services_.makeKeyboardEvent(*source_, modifiers[row].code, isDown);
    if (!event) return;
    event->type = CGEventType::flagsChanged;
    event->flags = flagsFor(heldModifiers_ | stroke.physical) | stroke.capsLock;
    tagAsTessaraEmitted(*event);
    services_.post(*event, stroke.location);
}

void KeyboardEventPoster::postKey(std::uint16_t code, bool isDown, ModifierFlags modifierFlags,
                                  const Stroke& stroke) {
    auto event = services_.makeKeyboardEvent(*source_, code, isDown);
    if (!event) return;
    const std::uint64_t capsLock = modifierFlags.contains(ModifierFlags::capsLock)
                                       ? CGEventFlagMask::alphaShift
                                       : stroke.capsLock;
    event->flags = flagsFor(heldModifiers_ | stroke.physical) | capsLock;
    tagAsTessaraEmitted(*event);
    services_.post(*event, stroke.location);
}

}  // namespace tessara
