#include "Platform/Simulated/SimulatedPointingDevice.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/MouseEvents.h"
#include "Platform/ScrollDeltas.h"
#include "Platform/Simulated/SimulatedDevices.h"
#include "Platform/Simulated/SimulatedDisplays.h"
#include "Platform/Simulated/SimulatedHardware.h"
#include "Platform/Simulated/SimulatedInputState.h"
#include "ScriptFault.h"

namespace tessara {
namespace {

/// The whole points that the system makes of so many counts; none of a number that is none.
double accelerated(double counts, double pointsPerCount) {
    constexpr double limit = 1e9;  // far beyond any desktop, and exact as an integer
    const double points = std::round(counts * pointsPerCount);
    return std::isfinite(points) ? std::clamp(points, -limit, limit) : 0;
}

}  // namespace

SimulatedPointingDevice::SimulatedPointingDevice(std::shared_ptr<const SimulatedHardware> hardware,
                                                 std::shared_ptr<SimulatedHIDDevice> device)
    : hardware_(std::move(hardware)), device_(std::move(device)) {}

void SimulatedPointingDevice::setAcceleration(double pointsPerCount) {
    pointsPerCount_.store(pointsPerCount);
}

void SimulatedPointingDevice::move(double xCounts, double yCounts) {
    const double dx = accelerated(xCounts, pointsPerCount_.load());
    const double dy = accelerated(yCounts, pointsPerCount_.load());
    hardware_->send(*device_, [=, displays = hardware_->displays(),
                               state = hardware_->state()](CGEvent& event) {
        const auto held = state->buttonsDown();
        event.type = CGEventType::mouseMoved;
        if (!held.empty()) {
            event.type = mouseEventTypes(*held.begin()).dragged;
            event.setIntegerValue(CGEventField::mouseEventButtonNumber, *held.begin());
        }
        event.location =
            displays->nearestReachable({.x = event.location.x + dx, .y = event.location.y + dy});
        event.setIntegerValue(CGEventField::mouseEventDeltaX, static_cast<std::int64_t>(dx));
        event.setIntegerValue(CGEventField::mouseEventDeltaY, static_cast<std::int64_t>(dy));
        event.setDoubleValue(CGEventField::unacceleratedPointerMovementX, xCounts);
        event.setDoubleValue(CGEventField::unacceleratedPointerMovementY, yCounts);
        return true;
    });
}

void SimulatedPointingDevice::press(std::int64_t button) {
    {
        MutexLock lock(mutex_);
        held_.insert(button);
    }
    sendButton(button, true);
}

void SimulatedPointingDevice::release(std::int64_t button) {
    {
        MutexLock lock(mutex_);
        held_.erase(button);
    }
    sendButton(button, false);
}

void SimulatedPointingDevice::click(std::int64_t button) {
    press(button);
    release(button);
}

void SimulatedPointingDevice::spin(std::int64_t lines) {
    sendWheel(lines, 0);
}

void SimulatedPointingDevice::spinSideways(std::int64_t lines) {
    sendWheel(0, lines);
}

void SimulatedPointingDevice::swipe(std::int64_t verticalPixels, std::int64_t horizontalPixels,
                                    int steps) {
    if (steps < 1) stopForScriptFault("a swipe has at least one step");
    const auto share = [steps](std::int64_t pixels, int step) {
        return pixels * (step + 1) / steps - pixels * step / steps;
    };
    for (int step = 0; step < steps; ++step) {
        sendScroll(share(verticalPixels, step), share(horizontalPixels, step),
                   step == 0 ? scrollPhaseBegan : scrollPhaseChanged);
    }
    sendScroll(0, 0, scrollPhaseEnded);
}

void SimulatedPointingDevice::send(const CGEvent& event) {
    hardware_->send(*device_, [event](CGEvent& present) {
        CGEvent completed = event;
        completed.flags = present.flags;
        completed.location = present.location;
        completed.timestampNanos = present.timestampNanos;
        present = completed;
        return true;
    });
}

void SimulatedPointingDevice::detach() {
    for (const auto button : takeHeld())
        sendButton(button, false);
    hardware_->devices().detach(*device_);
}

void SimulatedPointingDevice::vanish() {
    hardware_->send(*device_, [held = takeHeld(), state = hardware_->state()](CGEvent&) {
        state->releaseButtons(held);
        return false;
    });
    hardware_->devices().detach(*device_);
}

std::set<std::int64_t> SimulatedPointingDevice::takeHeld() {
    MutexLock lock(mutex_);
    return std::exchange(held_, {});
}

void SimulatedPointingDevice::sendButton(std::int64_t button, bool isDown) {
    hardware_->send(*device_, [=](CGEvent& event) {
        const auto types = mouseEventTypes(button);
        event.type = isDown ? types.down : types.up;
        event.setIntegerValue(CGEventField::mouseEventButtonNumber, button);
        return true;
    });
}

void SimulatedPointingDevice::sendWheel(std::int64_t verticalLines, std::int64_t horizontalLines) {
    hardware_->send(*device_, [=](CGEvent& event) {
        event.type = CGEventType::scrollWheel;
        setLineDeltas(event, verticalLines, horizontalLines);
        return true;
    });
}

void SimulatedPointingDevice::sendScroll(std::int64_t verticalPixels, std::int64_t horizontalPixels,
                                         std::int64_t phase) {
    hardware_->send(*device_, [=](CGEvent& event) {
        event.type = CGEventType::scrollWheel;
        setPixelDeltas(event, verticalPixels, horizontalPixels);
        event.setIntegerValue(CGEventField::scrollWheelEventScrollPhase, phase);
        return true;
    });
}

}  // namespace tessara
