#include "Platform/Linux/MouseFrameTranslator.h"

#include <algorithm>
#include <limits>

#include "InputEventTime.h"
#include "Platform/MouseEvents.h"

namespace tessara {
namespace {

std::optional<std::size_t> buttonOf(const input_event& event) {
    if (event.type != EV_KEY || event.code < BTN_LEFT || event.value < 0 || event.value > 1)
        return std::nullopt;
    const std::size_t button = std::size_t{event.code} - BTN_LEFT;
    if (button >= MouseFrameTranslator::buttonCount) return std::nullopt;
    return button;
}

bool isRelative(const input_event& event, std::uint16_t code) {
    return event.type == EV_REL && event.code == code;
}

bool isScanCode(const input_event& event) {
    return event.type == EV_MSC && event.code == MSC_SCAN;
}

}  // namespace

MouseFrameTranslator::MouseFrameTranslator(std::uint64_t senderID, std::uint64_t eventsOfInterest)
    : senderID_(senderID), eventsOfInterest_(eventsOfInterest) {}

MouseFrameTranslator::Frame MouseFrameTranslator::translate(Frame frame, std::uint64_t flags,
                                                            EventTapService::Callback& tap) {
    outputSize_ = 0;
    if (frame.empty()) return {};
    tap_ = &tap;
    flags_ = flags;
    timestampNanos_ = nanosecondsOf(frame.back());

    Motion motion;
    Turn verticalTurn;
    Turn horizontalTurn;
    const auto collect = [](const Wheel& wheel, const input_event& event, Turn& turn) {
        if (event.code == wheel.codes.lines) turn.lines += event.value;
        if (event.code == wheel.codes.highResolution) {
            turn.highResolution += event.value;
            turn.hasHighResolution = true;
        }
    };
    for (const input_event& event : frame) {
        if (event.type != EV_REL) continue;
        if (event.code == REL_X) motion.x += event.value;
        if (event.code == REL_Y) motion.y += event.value;
        collect(vertical_, event, verticalTurn);
        collect(horizontal_, event, horizontalTurn);
    }

    const auto isOf = [](const Wheel& wheel, const input_event& event) {
        return isRelative(event, wheel.codes.lines) ||
               isRelative(event, wheel.codes.highResolution);
    };
    for (const input_event& event : frame) {
        if (const auto button = buttonOf(event)) {
            changeButton(*button, event);
        } else if (isRelative(event, REL_X) || isRelative(event, REL_Y)) {
            move(motion);
        } else if (isOf(vertical_, event)) {
            turn(vertical_, verticalTurn);
        } else if (isOf(horizontal_, event)) {
            turn(horizontal_, horizontalTurn);
        } else if (event.type != EV_SYN) {
            append(event.type, event.code, event.value);
        }
    }
    return finished();
}

MouseFrameTranslator::Frame MouseFrameTranslator::releaseHeld(std::uint64_t timestampNanos,
                                                              std::uint64_t flags,
                                                              EventTapService::Callback& tap) {
    outputSize_ = 0;
    tap_ = &tap;
    flags_ = flags;
    timestampNanos_ = timestampNanos;
    const auto held = held_;
    for (std::size_t button = 0; button < buttonCount; ++button) {
        if (!held[button]) continue;
        input_event release{};
        release.type = EV_KEY;
        release.code = static_cast<std::uint16_t>(BTN_LEFT + button);
        changeButton(button, release);
    }
    return finished();
}

MouseFrameTranslator::Frame MouseFrameTranslator::releasePassed() {
    outputSize_ = 0;
    for (std::size_t button = 0; button < buttonCount; ++button) {
        if (passed_[button]) append(EV_KEY, static_cast<std::uint16_t>(BTN_LEFT + button), 0);
    }
    held_.reset();
    passed_.reset();
    for (Wheel* wheel : {&vertical_, &horizontal_}) {
        wheel->passesHighResolution = false;
        wheel->heldBack = 0;
    }
    return finished();
}

void MouseFrameTranslator::changeButton(std::size_t button, const input_event& event) {
    const bool isDown = event.value != 0;
    held_[button] = isDown;
    const auto number = static_cast<std::int64_t>(button);
    const auto types = mouseEventTypes(number);
    CGEvent change = makeEvent(isDown ? types.down : types.up);
    change.setIntegerValue(CGEventField::mouseEventButtonNumber, number);
    const bool mustPass = !isDown && passed_[button];
    if (!show(change) && !mustPass) {
        if (outputSize_ > 0 && isScanCode(output_[outputSize_ - 1])) --outputSize_;
        return;
    }
    passed_[button] = isDown;
    append(event.type, event.code, event.value);
}

void MouseFrameTranslator::move(Motion& motion) {
    if (motion.isDone) return;
    motion.isDone = true;
    std::size_t dragging = 0;
    while (dragging < buttonCount && !held_[dragging])
        ++dragging;

    CGEvent event = makeEvent(CGEventType::mouseMoved);
    if (dragging < buttonCount) {
        const auto number = static_cast<std::int64_t>(dragging);
        event.type = mouseEventTypes(number).dragged;
        event.setIntegerValue(CGEventField::mouseEventButtonNumber, number);
    }
    event.setIntegerValue(CGEventField::mouseEventDeltaX, motion.x);
    event.setIntegerValue(CGEventField::mouseEventDeltaY, motion.y);
    event.setIntegerValue(CGEventField::unacceleratedPointerMovementX, motion.x);
    event.setIntegerValue(CGEventField::unacceleratedPointerMovementY, motion.y);
    if (!show(event)) return;
    append(EV_REL, REL_X, event.integerValue(CGEventField::mouseEventDeltaX));
    append(EV_REL, REL_Y, event.integerValue(CGEventField::mouseEventDeltaY));
}

void MouseFrameTranslator::turn(Wheel& wheel, Turn& turn) {
    if (turn.isDone) return;
    turn.isDone = true;
    if (turn.lines != 0) {
        CGEvent event = makeEvent(CGEventType::scrollWheel);
        event.setIntegerValue(wheel.field, wheel.codes.sign * turn.lines);
        wheel.passesHighResolution = show(event);
        if (!turn.hasHighResolution) turn.highResolution = turn.lines * unitsPerDetent;
    }
    wheel.heldBack += turn.highResolution;
    if (wheel.passesHighResolution) {
        append(EV_REL, wheel.codes.lines, turn.lines);
        append(EV_REL, wheel.codes.highResolution, wheel.heldBack);
    }
    if (wheel.passesHighResolution || turn.lines != 0) wheel.heldBack = 0;
}

bool MouseFrameTranslator::show(CGEvent& event) {
    const auto number = static_cast<std::uint32_t>(event.type);
    if ((eventsOfInterest_ >> number & 1U) == 0) return true;
    return (*tap_)(event.type, event);
}

CGEvent MouseFrameTranslator::makeEvent(CGEventType type) const {
    CGEvent event;
    event.type = type;
    event.flags = flags_;
    event.timestampNanos = timestampNanos_;
    event.hidEventReference = senderID_;
    return event;
}

/// A relative value of nothing is none: the kernel has no such event.
void MouseFrameTranslator::append(std::uint16_t type, std::uint16_t code, std::int64_t value) {
    if ((type == EV_REL && value == 0) || outputSize_ + 1 == output_.size()) return;
    using Value = std::numeric_limits<std::int32_t>;
    input_event& event = output_[outputSize_++];
    event = {};
    event.type = type;
    event.code = code;
    event.value = static_cast<std::int32_t>(
        std::clamp(value, std::int64_t{Value::min()}, std::int64_t{Value::max()}));
}

MouseFrameTranslator::Frame MouseFrameTranslator::finished() {
    if (outputSize_ == 0) return {};
    input_event& end = output_[outputSize_++];  // append() leaves room for it
    end = {};
    end.type = EV_SYN;
    end.code = SYN_REPORT;
    return std::span(output_).first(outputSize_);
}

}  // namespace tessara
