#include "Platform/Simulated/SimulatedKeyboard.h"

#include <utility>

#include "Platform/ModifierKeys.h"
#include "Platform/Simulated/SimulatedHardware.h"
#include "Platform/Simulated/SimulatedInputState.h"

namespace tessara {

SimulatedKeyboard::SimulatedKeyboard(std::shared_ptr<const SimulatedHardware> hardware,
                                     std::shared_ptr<SimulatedHIDDevice> device)
    : hardware_(std::move(hardware)), device_(std::move(device)) {}

void SimulatedKeyboard::press(std::uint16_t code) {
    if (code == capsLockKeyCode) {
        toggleCapsLock();
    } else {
        sendKey(code, true);
    }
}

void SimulatedKeyboard::release(std::uint16_t code) {
    if (code != capsLockKeyCode) sendKey(code, false);
}

void SimulatedKeyboard::strike(std::uint16_t code) {
    press(code);
    release(code);
}

void SimulatedKeyboard::toggleCapsLock() {
    hardware_->send(*device_, [](CGEvent& event) {
        event.type = CGEventType::flagsChanged;
        event.flags ^= CGEventFlagMask::alphaShift;
        event.setIntegerValue(CGEventField::keyboardEventKeycode, capsLockKeyCode);
        return true;
    });
}

void SimulatedKeyboard::sendKey(std::uint16_t code, bool isDown) {
    const bool isModifier = findModifierKey(code) != nullptr;
    hardware_->send(*device_, [=, state = hardware_->state()](CGEvent& event) {
        if (isModifier) {
            event.type = CGEventType::flagsChanged;
            event.flags = state->flagsAfter(code, isDown);
        } else {
            event.type = isDown ? CGEventType::keyDown : CGEventType::keyUp;
        }
        event.setIntegerValue(CGEventField::keyboardEventKeycode, code);
        return true;
    });
}

}  // namespace tessara
