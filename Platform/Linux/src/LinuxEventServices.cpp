#include "Platform/Linux/LinuxEventServices.h"

#include <algorithm>
#include <limits>

#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/LinuxKeyTable.h"
#include "Platform/Linux/VirtualKeyboard.h"
#include "Platform/Linux/VirtualMouse.h"
#include "Platform/ModifierKeys.h"
#include "Platform/MouseEvents.h"

namespace tessara {
namespace {

using enum CGEventField;

std::uint16_t keyCode(const CGEvent& event) {
    return static_cast<std::uint16_t>(event.integerValue(keyboardEventKeycode));
}

/// A line is a detent of the wheel; what is too much for the fields' usual makers is limited.
std::int64_t scrolledPixels(const CGEvent& event, CGEventField lineField, CGEventField pixelField) {
    if (event.integerValue(scrollWheelEventIsContinuous) != 0)
        return event.integerValue(pixelField);
    using Lines = std::numeric_limits<std::int32_t>;
    const std::int64_t lines = event.integerValue(lineField);
    return std::clamp(lines, std::int64_t{Lines::min()}, std::int64_t{Lines::max()}) *
           pixelsPerDetent;
}

}  // namespace

LinuxEventServices::LinuxEventServices(VirtualMouse& mouse, VirtualKeyboard& keyboard,
                                       const KeyboardState& hardware)
    : mouse_(mouse), keyboard_(keyboard), hardware_(hardware) {}

std::optional<CGEvent> LinuxEventServices::makeBlankEvent() {
    return CGEvent{};
}

void LinuxEventServices::post(const CGEvent& event, CGEventTapLocation) {
    switch (event.type) {
        case CGEventType::scrollWheel:
            mouse_.scroll(
                scrolledPixels(event, scrollWheelEventDeltaAxis1, scrollWheelEventPointDeltaAxis1),
                scrolledPixels(event, scrollWheelEventDeltaAxis2, scrollWheelEventPointDeltaAxis2));
            break;
        case CGEventType::keyDown:
        case CGEventType::keyUp:
            keyboard_.setKey(keyCode(event), event.type == CGEventType::keyDown);
            break;
        case CGEventType::flagsChanged:
            if (const auto* modifier = findModifierKey(keyCode(event)))
                keyboard_.setKey(modifier->code, isShownDown(*modifier, event.flags));
            break;
        default:
            if (const auto change = mouseButtonChange(event))
                mouse_.setButton(change->button, change->isDown);
            break;
    }
}

void LinuxEventServices::leaveToUser(std::uint16_t code) {
    // A desktop goes on holding a key for as long as any of its keyboards does.
    keyboard_.setKey(code, false);
}

bool LinuxEventServices::keyState(EventSourceState state, std::uint16_t code) {
    const auto kernelCode = LinuxKeyTable::kernelCode(code);
    if (!kernelCode || state == EventSourceState::privateState) return false;
    return hardware_.isDown(*kernelCode) ||
           (state == EventSourceState::combinedSession && keyboard_.held().isDown(*kernelCode));
}

std::uint64_t LinuxEventServices::flagsState(EventSourceState state) {
    if (state == EventSourceState::privateState) return 0;
    const std::uint64_t ofHardware = hardware_.flags();
    return state == EventSourceState::hidSystem ? ofHardware
                                                : ofHardware | keyboard_.held().flags();
}

}  // namespace tessara
