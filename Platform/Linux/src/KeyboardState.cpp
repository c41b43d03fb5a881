#include "Platform/Linux/KeyboardState.h"

#include <algorithm>

#include "Platform/CGEvent.h"
#include "Platform/Linux/LinuxKeyTable.h"
#include "Platform/ModifierKeys.h"

namespace tessara {

static_assert(std::ranges::all_of(modifierKeys, [](const ModifierKey& key) {
    return LinuxKeyTable::kernelCode(key.code).has_value();
}));

bool KeyboardState::isDown(std::uint16_t kernelCode) const {
    return kernelCode < keyCount && holders_[kernelCode].load(std::memory_order_relaxed) > 0;
}

bool KeyboardState::isCapsLockOn() const {
    return capsLockHolders_.load(std::memory_order_relaxed) > 0;
}

std::uint64_t KeyboardState::flags() const {
    std::uint64_t flags = isCapsLockOn() ? CGEventFlagMask::alphaShift : 0;
    for (const auto& modifier : modifierKeys) {
        const auto kernelCode = LinuxKeyTable::kernelCode(modifier.code);
        if (kernelCode && isDown(*kernelCode)) flags |= modifier.familyFlag | modifier.deviceFlag;
    }
    return flags;
}

void PressedKeys::set(std::uint16_t kernelCode, bool isDown) {
    if (kernelCode >= down_.size() || down_[kernelCode] == isDown) return;
    down_[kernelCode] = isDown;
    auto& holders = state_.holders_[kernelCode];
    if (isDown) {
        holders.fetch_add(1, std::memory_order_relaxed);
    } else {
        holders.fetch_sub(1, std::memory_order_relaxed);
    }
}

void PressedKeys::replace(const Keys& down) {
    const Keys changed = down ^ down_;
    for (std::size_t code = 0; code < changed.size(); ++code) {
        if (changed[code]) set(static_cast<std::uint16_t>(code), down[code]);
    }
}

void PressedKeys::setCapsLock(bool isOn) {
    if (isCapsLockOn_ == isOn) return;
    isCapsLockOn_ = isOn;
    if (isOn) {
        state_.capsLockHolders_.fetch_add(1, std::memory_order_relaxed);
    } else {
        state_.capsLockHolders_.fetch_sub(1, std::memory_order_relaxed);
    }
}

void PressedKeys::clear() {
    replace({});
    setCapsLock(false);
}

}  // namespace tessara
