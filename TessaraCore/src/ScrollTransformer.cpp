#include "TessaraCore/ScrollTransformer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "TessaraCore/Checked.h"
#include "TessaraCore/Clamp.h"

namespace tessara {

namespace {

/// Stands in for zero where something is divided by: 2 to the power -52.
constexpr double tiniest = std::numeric_limits<double>::epsilon();

/// To the nearest whole pixel, halves away from zero.
std::int64_t roundedPixels(double pixels) {
    return checkedInt64(std::round(pixels));
}

bool passesGate(const ScrollSettings& settings, const ScrollInput& input) {
    if (!settings.isEnabled || !settings.enabledAxes.contains(input.axis)) return false;
    if (input.lineDelta == 0) return false;
    if (!settings.activationModifiers) return true;
    return (*settings.activationModifiers - input.modifiers).normalized().isEmpty();
}

/// How many clicks in a row, this one included, have come fast enough upon the one before.
std::int64_t streakWith(const ScrollInput& input, const ScrollTransformer::AxisState& state,
                        const ScrollSettings& settings, bool directionChanged) {
    if (!settings.accelerationEnabled || directionChanged || !state.lastDetentMillis) return 0;
    const double gap = input.timestampMillis - *state.lastDetentMillis;
    const bool goesOn = gap >= 0 && gap <= settings.accelerationWindowMillis;
    return goesOn ? checkedAdd<std::int64_t>(state.streak, 1) : 0;
}

double multiplierOf(std::int64_t streak, const ScrollSettings& settings) {
    return std::min(1 + settings.accelerationGain * static_cast<double>(streak),
                    settings.maxAccelerationMultiplier);
}

/// The pixels that a click asks for by itself.
double requestedPixels(const ScrollInput& input, std::int64_t streak,
                       const ScrollSettings& settings) {
    const bool isForward = (input.lineDelta > 0) != settings.isInverted;
    const auto lines = static_cast<double>(checkedAbs(input.lineDelta));
    const double pixels = multiplierOf(streak, settings) * (settings.pixelsPerDetent * lines);
    return isForward ? pixels : -pixels;
}

/// How a new plan relates to the one before it.
struct Takeover {
    GestureTransition transition = GestureTransition::begin;
    std::optional<std::uint64_t> supersedes = std::nullopt;
    std::int64_t carry = 0;
    double startProgress = 0;
    double firstOffset;
};

/// Where on the easing curve `plan` stands at `time`.
double progressOnCurve(const ScrollPlan& plan, double time) {
    if (plan.durationMillis <= 0) return 1;
    const double elapsed = (time - plan.startTimestampMillis) / plan.durationMillis;
    return plan.easingStartProgress + (1 - plan.easingStartProgress) * clamp(elapsed, 0.0, 1.0);
}

/// The time from `time` to the next frame of `plan`.
double delayToNextFrame(const ScrollPlan& plan, double time) {
    double nextFrame = plan.startTimestampMillis + plan.firstFrameOffsetMillis;
    if (nextFrame <= time) {
        const double interval = std::max(plan.frameIntervalMillis, tiniest);
        nextFrame += (std::floor((time - nextFrame) / interval) + 1) * interval;
    }
    return std::max(nextFrame - time, 0.0);
}

Takeover takeOver(const std::optional<ScrollPlan>& previous, const ScrollInput& input,
                  bool directionChanged, std::optional<std::int64_t> reportedPixels,
                  double frameIntervalMillis) {
    Takeover result{.firstOffset = frameIntervalMillis};
    if (!previous || input.timestampMillis >= previous->endTimestampMillis()) return result;

    result.supersedes = previous->id;
    const std::int64_t delivered =
        reportedPixels ? *reportedPixels
                       : ScrollTransformer::deliveredPixels(*previous, input.timestampMillis);
    const bool gestureUnderWay =
        previous->gestureTransition == GestureTransition::continuePrevious || delivered != 0;

    if (directionChanged || previous->modifiers != input.modifiers) {
        if (gestureUnderWay) result.transition = GestureTransition::endPreviousThenBegin;
        return result;
    }
    if (gestureUnderWay) result.transition = GestureTransition::continuePrevious;
    result.carry = checkedSubtract(previous->totalPixelDelta, delivered);
    result.startProgress = progressOnCurve(*previous, input.timestampMillis);
    result.firstOffset =
        std::min(delayToNextFrame(*previous, input.timestampMillis), frameIntervalMillis);
    return result;
}

/// The steps of a plan of `total` pixels.
ScrollSteps makeSteps(const ScrollSettings& settings, const Takeover& takeover, std::int64_t total,
                      const std::optional<ScrollPlan>& previous) {
    const double duration = settings.durationMillis;
    const double interval = settings.frameIntervalMillis;
    const double first = std::max(takeover.firstOffset, 0.0);
    const std::int64_t frames = std::max<std::int64_t>(
        checkedAdd<std::int64_t>(
            checkedInt64(std::ceil(std::max(0.0, duration - first) / interval)), 1),
        1);
    const double p0 = clamp(takeover.startProgress, 0.0, 0.999);
    const double e0 = valueAt(settings.easing, p0);
    const double denominator = std::max(1 - e0, tiniest);

    ScrollSteps::Builder steps(checkedCast<std::size_t>(frames) + 2);
    if (takeover.transition == GestureTransition::endPreviousThenBegin) {
        steps.append({.phase = ScrollPhase::ended, .modifiers = previous->modifiers});
    }
    ScrollPhase phase = takeover.transition == GestureTransition::continuePrevious
                            ? ScrollPhase::changed
                            : ScrollPhase::began;
    std::int64_t reached = 0;
    for (std::int64_t frame = 0; frame < frames; ++frame) {
        const double offset = std::min(duration, first + static_cast<double>(frame) * interval);
        const double progress = clamp(p0 + (1 - p0) * (offset / duration), 0.0, 1.0);
        // It is the running sum that is rounded, not each step: so the steps add up to the total.
        const std::int64_t target = roundedPixels((valueAt(settings.easing, progress) - e0) /
                                                  denominator * static_cast<double>(total));
        const std::int64_t delta = checkedSubtract(target, reached);
        reached = target;
        if (delta == 0) continue;
        steps.append({.offsetMillis = offset, .pixelDelta = delta, .phase = phase});
        phase = ScrollPhase::changed;
    }
    steps.append({.offsetMillis = duration, .phase = ScrollPhase::ended});
    return std::move(steps).finish();
}

}  // namespace

ScrollOutcome ScrollTransformer::transform(
    const ScrollInput& input, std::optional<std::int64_t> deliveredPixelsOfPreviousPlan) {
    const ScrollSettings settings = settings_.sanitized();
    if (!passesGate(settings, input)) return ScrollPassThrough{input};

    AxisState& state = axes_[static_cast<std::size_t>(input.axis)];
    const std::int64_t direction = input.lineDelta > 0 ? 1 : -1;
    const bool directionChanged = state.lastDirection != 0 && state.lastDirection != direction;
    state.streak = streakWith(input, state, settings, directionChanged);

    const Takeover takeover = takeOver(state.plan, input, directionChanged,
                                       deliveredPixelsOfPreviousPlan, settings.frameIntervalMillis);

    const std::int64_t total = roundedPixels(
        clamp(static_cast<double>(takeover.carry) + requestedPixels(input, state.streak, settings),
              -settings.maxInFlightPixels, settings.maxInFlightPixels));
    state.lastDetentMillis = input.timestampMillis;
    state.lastDirection = direction;
    // A plan that is running goes on undisturbed: only a new plan takes its place.
    if (total == 0) return ScrollIgnore{};

    ScrollPlan plan{.id = nextPlanID_++,
                    .axis = input.axis,
                    .modifiers = input.modifiers,
                    .deviceID = input.deviceID,
                    .startTimestampMillis = input.timestampMillis,
                    .durationMillis = settings.durationMillis,
                    .totalPixelDelta = total,
                    .supersedes = takeover.supersedes,
                    .gestureTransition = takeover.transition,
                    .easingStartProgress = takeover.startProgress,
                    .frameIntervalMillis = settings.frameIntervalMillis,
                    .firstFrameOffsetMillis = takeover.firstOffset,
                    .steps = makeSteps(settings, takeover, total, state.plan)};
    state.plan = plan;
    return ScrollAnimate{std::move(plan)};
}

void ScrollTransformer::reset() {
    axes_ = {};
}

const ScrollPlan* ScrollTransformer::inFlightPlan(ScrollAxis axis) const {
    const std::optional<ScrollPlan>& plan = axisState(axis).plan;
    return plan ? &*plan : nullptr;
}

std::int64_t ScrollTransformer::deliveredPixels(const ScrollPlan& plan, double timestampMillis) {
    const double elapsed = timestampMillis - plan.startTimestampMillis;
    if (elapsed <= 0) return 0;
    if (elapsed >= plan.durationMillis) return plan.totalPixelDelta;
    std::int64_t delivered = 0;
    for (const ScrollStep& step : plan.steps) {
        if (step.offsetMillis > elapsed) break;
        delivered = checkedAdd(delivered, step.pixelDelta);
    }
    return delivered;
}

}  // namespace tessara
