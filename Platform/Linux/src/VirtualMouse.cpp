#include "Platform/Linux/VirtualMouse.h"

#include <utility>

#include "InputFrame.h"
#include "Platform/Linux/UinputDevice.h"

namespace tessara {
namespace {

void add(InputFrame& frame, const WheelCodes& wheel, ScrollToDetents::Turn turn) {
    if (turn.lines != 0) frame.add(EV_REL, wheel.lines, turn.lines * wheel.sign);
    if (turn.units != 0) frame.add(EV_REL, wheel.highResolution, turn.units * wheel.sign);
}

bool isWheelEvent(const input_event& event, const WheelCodes& wheel) {
    return event.type == EV_REL &&
           (event.code == wheel.lines || event.code == wheel.highResolution);
}

/// The kernel's code of the button; 0, which is no button's, for a number that has none.
std::uint16_t buttonCode(std::int64_t number) {
    const bool isButton = number >= 0 && number < VirtualMouse::buttonCount;
    return isButton ? static_cast<std::uint16_t>(BTN_LEFT + number) : std::uint16_t{0};
}

}  // namespace

VirtualMouse::VirtualMouse() : VirtualMouse(&UinputDevice::createMouse) {}

VirtualMouse::VirtualMouse(VirtualDevice::Opener opener) : device_(std::move(opener), held_) {}

std::expected<void, std::error_code> VirtualMouse::open() {
    MutexLock lock(mutex_);
    return device_.open();
}

void VirtualMouse::close() {
    MutexLock lock(mutex_);
    device_.close();
}

bool VirtualMouse::write(std::span<const input_event> frame) {
    MutexLock lock(mutex_);
    for (const auto& event : frame) {
        if (isWheelEvent(event, verticalWheel))
            vertical_.noteDirection(std::int64_t{event.value} * verticalWheel.sign);
        if (isWheelEvent(event, horizontalWheel))
            horizontal_.noteDirection(std::int64_t{event.value} * horizontalWheel.sign);
    }
    return device_.write(frame);
}

void VirtualMouse::scroll(std::int64_t verticalPixels, std::int64_t horizontalPixels) {
    MutexLock lock(mutex_);
    InputFrame frame;
    add(frame, verticalWheel, vertical_.advance(verticalPixels));
    add(frame, horizontalWheel, horizontal_.advance(horizontalPixels));
    if (!frame.isEmpty()) static_cast<void>(device_.write(frame.finish()));
}

void VirtualMouse::setButton(std::int64_t number, bool isDown) {
    const std::uint16_t code = buttonCode(number);
    if (code == 0) return;
    InputFrame frame;
    frame.add(EV_KEY, code, isDown ? 1 : 0);
    MutexLock lock(mutex_);
    static_cast<void>(device_.write(frame.finish()));
}

void VirtualMouse::releaseAll() {
    MutexLock lock(mutex_);
    device_.releaseAll();
}

bool VirtualMouse::isButtonDown(std::int64_t number) const {
    return held_.isDown(buttonCode(number));
}

}  // namespace tessara
