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

using ScrollOutcome = std::variant<ScrollPassThrough, ScrollAnimate, ScrollIgnore>;

/// Turns the coarse clicks of a wheel into glides of small pixel steps.
///
/// A click that comes while a glide of its axis runs takes the glide over: the pixels not yet
/// delivered are carried into a new plan, which goes on where the old one stood on the easing curve
/// and on the grid of its frames, so that a fast run of clicks reads as one motion without a seam.
/// A click in the other direction, or with other modifiers, drops what is left and starts afresh.
/// Clicks in quick succession count for more.
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

    explicit ScrollTransformer(const ScrollSettings& settings) : settings_(settings) {}

    [[nodiscard]] const ScrollSettings& settings() const { return settings_; }
    /// Takes effect at the next `transform`. Plans and streaks stay.
    void setSettings(const ScrollSettings& settings) { settings_ = settings; }

    /// Says what becomes of one wheel event.
    ///
    /// `deliveredPixelsOfPreviousPlan` is what the caller knows to have really posted of the
    /// running plan of the axis; when it is absent the schedule of the plan and the input's time
    /// are taken for it. The call makes one heap allocation for a plan and none otherwise, and
    /// takes time in proportion to the number of frames, 5001 at most.
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

    [[nodiscard]] const AxisState& axisState(ScrollAxis axis) const {
        return axes_[static_cast<std::size_t>(axis)];
    }
    /// The id of the next plan.
    [[nodiscard]] std::uint64_t nextPlanID() const { return nextPlanID_; }

    /// The pixels of `plan` that are due at `timestampMillis` according to its schedule. A step
    /// that is due at just that time counts.
    [[nodiscard]] static std::int64_t deliveredPixels(const ScrollPlan& plan,
                                                      double timestampMillis);

    bool operator==(const ScrollTransformer&) const = default;

  private:
    /// Counts the click into the streak of its axis; the multiplier that the streak has reached.
    static double advanceStreak(AxisState& state, const ScrollSettings& settings,
                                const ScrollInput& input, bool directionChanged);

    ScrollSettings settings_;
    std::array<AxisState, allCases<ScrollAxis>.size()> axes_;
    std::uint64_t nextPlanID_ = 1;
};

}  // namespace tessara
