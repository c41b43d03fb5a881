#include "TessaraEngine/InputRouter.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

#include "TessaraEngine/CGEventReaders.h"
#include "TessaraEngine/DeviceScope.h"
#include "TessaraEngine/PointerPipeline.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {

InputRouter::InputRouter(DeviceScope& scope, ScrollPipeline& scroll, ButtonPipeline& buttons,
                         PointerPipeline& pointer,
                         std::unique_ptr<PointerCursorMoving> pointerCursor, const Clock& clock)
    : scope_(scope),
      scroll_(scroll),
      buttons_(buttons),
      pointer_(pointer),
      pointerCursor_(std::move(pointerCursor)),
      clock_(clock) {}

template <typename... Counter>
void InputRouter::count(Counter... counters) {
    MutexLock lock(mutex_);
    ((metrics_.*counters += 1), ...);
}

TapVerdict InputRouter::route(CGEventType type, CGEvent& event) {
    if (isTessaraEmitted(event)) {
        count(&Metrics::selfEmittedSeen);
        return swallowsOwnOutput_ ? TapVerdict::suppress : TapVerdict::pass;
    }

    const ScopeDecision decision = scope_.decide(event);
    const auto* target = std::get_if<TargetDevice>(&decision);
    if (target == nullptr) {
        const bool isForeign = std::holds_alternative<ForeignDevice>(decision);
        count(isForeign ? &Metrics::fromForeignDevice : &Metrics::unidentified,
              &Metrics::passedThrough);
        return TapVerdict::pass;
    }

    switch (type) {
        case CGEventType::leftMouseDown:
        case CGEventType::leftMouseUp:
        case CGEventType::rightMouseDown:
        case CGEventType::rightMouseUp:
        case CGEventType::otherMouseDown:
        case CGEventType::otherMouseUp:
            return routeButton(event);
        case CGEventType::mouseMoved:
        case CGEventType::leftMouseDragged:
        case CGEventType::rightMouseDragged:
        case CGEventType::otherMouseDragged:
            return routeMotion(event, target->deviceID);
        case CGEventType::scrollWheel:
            return routeWheel(event, target->deviceID);
        default:
            count(&Metrics::fromTargetDevice, &Metrics::passedThrough);
            return TapVerdict::pass;
    }
}

TapVerdict InputRouter::routeButton(const CGEvent& event) {
    const auto input = buttonEvent(event, clock_);
    if (!input) {
        count(&Metrics::fromTargetDevice, &Metrics::passedThrough);
        return TapVerdict::pass;
    }
    count(&Metrics::fromTargetDevice, &Metrics::buttonsHandled);
    return verdict(buttons_.handle(*input));
}

TapVerdict InputRouter::routeMotion(CGEvent& event, DeviceID deviceID) {
    if (!pointer_.isEnabled()) {
        count(&Metrics::fromTargetDevice, &Metrics::pointerSkippedDisabled,
              &Metrics::passedThrough);
        return TapVerdict::pass;
    }

    const auto passUntouched = [this] {
        count(&Metrics::fromTargetDevice, &Metrics::passedThrough);
        return TapVerdict::pass;
    };
    const auto source = pointerCursor_ ? MotionSource::unaccelerated : MotionSource::accelerated;
    const auto motion = pointerMotion(event, deviceID, source, clock_);
    if (!motion) return passUntouched();
    const PointerOutcome outcome = pointer_.handle(*motion);
    if (outcome.disposition == PointerDisposition::passThrough) return passUntouched();

    if (pointerCursor_) {
        const auto location = pointerCursor_->move(outcome.dx, outcome.dy);
        if (!location) {
            pointer_.reset();
            return passUntouched();
        }
        event.location = *location;
    } else if (pointer_.repositionsCursor()) {
        event.location.x += static_cast<double>(outcome.dx) - motion->delta.dx;
        event.location.y += static_cast<double>(outcome.dy) - motion->delta.dy;
    }
    event.setIntegerValue(CGEventField::mouseEventDeltaX, outcome.dx);
    event.setIntegerValue(CGEventField::mouseEventDeltaY, outcome.dy);
    count(&Metrics::fromTargetDevice, &Metrics::pointerHandled);
    return TapVerdict::pass;
}

TapVerdict InputRouter::routeWheel(const CGEvent& event, DeviceID deviceID) {
    const auto input = scrollInput(event, deviceID, clock_);
    if (!input) {
        count(&Metrics::fromTargetDevice, &Metrics::passedThrough);
        return TapVerdict::pass;
    }
    const double skew = std::abs(clock_.now() - input->timestampMillis);
    {
        MutexLock lock(mutex_);
        metrics_.fromTargetDevice += 1;
        metrics_.scrollHandled += 1;
        metrics_.maxClockSkewMillis = std::max(metrics_.maxClockSkewMillis, skew);
    }
    return verdict(scroll_.handle(*input));
}

TapVerdict InputRouter::verdict(ScrollDisposition disposition) {
    return countedVerdict(disposition == ScrollDisposition::passThrough);
}

TapVerdict InputRouter::verdict(ButtonDisposition disposition) {
    return countedVerdict(disposition == ButtonDisposition::passThrough);
}

TapVerdict InputRouter::countedVerdict(bool passes) {
    count(passes ? &Metrics::passedThrough : &Metrics::suppressed);
    return passes ? TapVerdict::pass : TapVerdict::suppress;
}

void InputRouter::resetAll() {
    buttons_.reset();
    scroll_.reset();
    pointer_.reset();
}

InputRouter::Metrics InputRouter::snapshotMetrics() const {
    MutexLock lock(mutex_);
    return metrics_;
}

void InputRouter::resetMetrics() {
    MutexLock lock(mutex_);
    metrics_ = {};
}

}  // namespace tessara
