#include "Platform/Linux/VirtualKeyboard.h"

#include <utility>

#include "InputFrame.h"
#include "Platform/Linux/LinuxKeyTable.h"
#include "Platform/Linux/UinputDevice.h"

namespace tessara {

VirtualKeyboard::VirtualKeyboard() : VirtualKeyboard(&UinputDevice::createKeyboard) {}

VirtualKeyboard::VirtualKeyboard(VirtualDevice::Opener opener)
    : device_(std::move(opener), held_) {}

std::expected<void, std::error_code> VirtualKeyboard::open() {
    MutexLock lock(mutex_);
    return device_.open();
}

void VirtualKeyboard::close() {
    MutexLock lock(mutex_);
    device_.close();
}

void VirtualKeyboard::setKey(std::uint16_t virtualCode, bool isDown) {
    const auto kernelCode = LinuxKeyTable::kernelCode(virtualCode);
    if (!kernelCode) return;
    InputFrame frame;
    frame.add(EV_KEY, *kernelCode, isDown ? 1 : 0);
    MutexLock lock(mutex_);
    static_cast<void>(device_.write(frame.finish()));
}

}  // namespace tessara
