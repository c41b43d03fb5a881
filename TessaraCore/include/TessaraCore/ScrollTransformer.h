#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <variant>

#include "TessaraCore/ScrollInput.h"
#include "TessaraCore/ScrollPlan.h"
#include "TessaraCore/ScrollSettings.h"

namespace tessara {

/// The event is none of the transformer's business and goes on as it came.
struct ScrollPassThrough {
    ScrollInput input;
    bool operator==(const ScrollPassThrough&) const = default;
};

/// The event is swallowed and the plan is played in its place.
struct ScrollAnimate {
    ScrollPlan plan;
    bool operator==(const ScrollAnimate&) const = default;
};

/// The event is swallowed and there is nothing to play.
struct ScrollIgnore {
    bool operator==(const ScrollIgnore&) const = default;
};

/// What becomes of one wheel event.
using ScrollOutcome = std::variant<ScrollPassThrough, ScrollAnimate, ScrollIgnore>;

/// Turns the coarse clicks of a wheel into glides of small pixel steps.
///
/// A click that comes while a glide of its axis runs takes the glide over: the pixels not yet
/// delivered are carried into a new plan, which goes on where the old one stood on the easing curve
/// and on the grid of its frames, so that a fast run of clicks reads as one motion without a seam.
/// A click in the other direction, or with other modifiers, drops what is left and starts afresh.
/// Clicks in quick succession count for more.
///
/// The formulas, with the settings in their ranges. The streak s counts the clicks in a row that
/// came within the acceleration window of the one before and in its direction; an event of many
/// lines is one click:
///
///     multiplier = min(1 + accelerationGain * s, maxAccelerationMultiplier)
///     total      = round(carried + direction * multiplier * pixelsPerDetent * lines)
///
/// within plus and minus `maxInFlightPixels`, halves rounded away from zero; inversion turns the
/// direction. A frame at a time t of a plan of length d, which starts at p on the easing curve e,
/// at 0.999 if it would be later, has reached
///
///     round(total * (e(p + (1 - p) * t / d) - e(p)) / (1 - e(p)))
///
/// pixels. It is this sum that is rounded and not each step, so the steps add up to the total.
///
/// With the default settings one line becomes 50 pixels in 22 steps, 5, 4, 4, 4, 3, 4, ... at 8,
/// 16, 24, ... ms, and the close at 250 ms. A second line 100 ms later finds 38 of them delivered;
/// it asks for 2.2 times 50 itself and becomes a plan of 122 pixels that starts at 0.4 on the
/// curve, with 6 pixels after 4 ms, 11 after 12 ms and 10 after 20 ms.
///
/// It is pure logic. It reads no clock, posts nothing, starts no timer, and does not play the
/// plans: that is the business of the scroll pipeline. It is a value without a lock of its own; its
/// owner sees to it that one thread at a time uses it.
class ScrollTransformer {
  public:
    /// What is remembered of one axis.
    struct AxisState {
        /// The last plan made, run out or not.
        std::optional<ScrollPlan> plan = std::nullopt;
        /// The time of the last click that was taken.
        std::optional<double> lastDetentMillis = std::nullopt;
        /// The direction of that click as the wheel gave it, before inversion: +1 or -1, 0 before
        /// the first.
        std::int64_t lastDirection = 0;
        /// How many clicks in a row came within the acceleration window of the one before.
        std::int64_t streak = 0;

        bool operator==(const AxisState&) const = default;
    };

    /// A transformer that remembers nothing yet.
    explicit ScrollTransformer(const ScrollSettings& settings) : settings_(settings) {}

    [[nodiscard]] const ScrollSettings& settings() const { return settings_; }
    /// Takes effect at the next `transform`. Plans and streaks stay.
    void setSettings(const ScrollSettings& settings) { settings_ = settings; }

    /// Says what becomes of one wheel event, and remembers it. An event is passed through, and
    /// nothing remembered, when the settings are off, the axis or the lines are none of theirs, or
    /// an activation modifier is missing. It is ignored when its total comes to 0; a plan that is
    /// running then goes on.
    ///
    /// `deliveredPixelsOfPreviousPlan` is what the caller knows to have really posted of the
    /// running plan of the axis; when it is absent the schedule of the plan and the input's time
    /// are taken for it. Without a running plan it does not matter. The call makes one heap
    /// allocation for a plan and none otherwise, and takes time in proportion to the number of
    /// frames, 5001 at most.
    ///
    /// There is no error. Settings are limited to their ranges first, and timestamps must be
    /// finite. A line delta of the smallest integer stops the process.
    [[nodiscard]] ScrollOutcome transform(
        const ScrollInput& input,
        std::optional<std::int64_t> deliveredPixelsOfPreviousPlan = std::nullopt);

    /// Forgets plans, times, directions and streaks of all axes. Settings stay, and plan ids go on.
    void reset();

    /// The last plan of `axis`, or null. It may have run out: compare its end when that matters.
    /// Valid until the next `transform` or `reset`.
    [[nodiscard]] const ScrollPlan* inFlightPlan(ScrollAxis axis) const;

    /// What is remembered of `axis`. Valid until the next `transform` or `reset`.
    [[nodiscard]] const AxisState& axisState(ScrollAxis axis) const {
        return axes_[static_cast<std::size_t>(axis)];
    }
    /// The id of the next plan.
    [[nodiscard]] std::uint64_t nextPlanID() const { return nextPlanID_; }

    /// The pixels of `plan` that are due at `timestampMillis` according to its schedule, from 0 at
    /// its start to its total at its end. A step that is due at just that time counts. Any thread
    /// may call it.
    [[nodiscard]] static std::int64_t deliveredPixels(const ScrollPlan& plan,
                                                      double timestampMillis);

    bool operator==(const ScrollTransformer&) const = default;

  private:
    ScrollSettings settings_;
    std::array<AxisState, allCases<ScrollAxis>.size()> axes_;
    std::uint64_t nextPlanID_ = 1;
};

}  // namespace tessara
