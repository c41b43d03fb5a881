#include "Platform/Simulated/SimulatedInputState.h"

#include "Platform/ModifierKeys.h"
#include "Platform/MouseEvents.h"

namespace tessara {
namespace {

std::uint16_t keyCode(const CGEvent& event) {
    return static_cast<std::uint16_t>(event.integerValue(CGEventField::keyboardEventKeycode));
}

template <typename Value>
void note(std::set<Value>& held, Value value, bool isDown) {
    if (isDown) {
        held.insert(value);
    } else {
        held.erase(value);
    }
}

}  // namespace

void SimulatedInputState::apply(const CGEvent& event) {
    MutexLock lock(mutex_);
    if (const auto change = mouseButtonChange(event)) {
        note(buttons_, change->button, change->isDown);
    } else if (event.type == CGEventType::keyDown || event.type == CGEventType::keyUp) {
        note(keys_, keyCode(event), event.type == CGEventType::keyDown);
    } else if (event.type == CGEventType::flagsChanged) {
        if (keyCode(event) == capsLockKeyCode) {
            isCapsLockOn_ = (event.flags & CGEventFlagMask::alphaShift) != 0;
        } else if (const auto* modifier = findModifierKey(keyCode(event))) {
            note(keys_, modifier->code, isShownDown(*modifier, event.flags));
        }
    }
}

void SimulatedInputState::releaseButtons(const std::set<std::int64_t>& buttons) {
    MutexLock lock(mutex_);
    for (const auto button : buttons)
        buttons_.erase(button);
}

bool SimulatedInputState::isKeyDown(std::uint16_t code) const {
    MutexLock lock(mutex_);
    return keys_.contains(code);
}

std::uint64_t SimulatedInputState::flags() const {
    MutexLock lock(mutex_);
    return flagsOf(keys_);
}

std::uint64_t SimulatedInputState::flagsAfter(std::uint16_t code, bool isDown) const {
    MutexLock lock(mutex_);
    auto keys = keys_;
    note(keys, code, isDown);
    return flagsOf(keys);
}

std::uint64_t SimulatedInputState::flagsOf(const std::set<std::uint16_t>& keys) const {
    std::uint64_t flags = isCapsLockOn_ ? CGEventFlagMask::alphaShift : 0;
    for (const auto& row : modifierKeys) {
        if (keys.contains(row.code)) flags |= row.familyFlag | row.deviceFlag;
    }
    return flags;
}

std::set<std::uint16_t> SimulatedInputState::keysDown() const {
    MutexLock lock(mutex_);
    return keys_;
}

std::set<std::int64_t> SimulatedInputState::buttonsDown() const {
    MutexLock lock(mutex_);
    return buttons_;
}

}  // namespace tessara
