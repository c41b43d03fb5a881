#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/RawValue.h"
#include "TessaraCore/ScrollAxis.h"

namespace tessara {

/// Where a step stands in the gesture that applications see. A gesture is one `began`, any number
/// of `changed` and one `ended`; several plans that chain make one gesture.
enum class ScrollPhase : std::uint8_t {
    began,    ///< the first step that moves
    changed,  ///< every further step that moves
    ended     ///< the close, which moves nothing
};

/// The printed names of the phases.
template <>
inline constexpr auto rawValues<ScrollPhase> =
    std::to_array<std::string_view>({"began", "changed", "ended"});

/// How a plan relates to the gesture that applications see.
enum class GestureTransition : std::uint8_t {
    begin,                ///< it starts a new gesture
    continuePrevious,     ///< it goes on with the one under way
    endPreviousThenBegin  ///< it closes the one under way, then starts a new one
};

/// The printed names of the transitions.
template <>
inline constexpr auto rawValues<GestureTransition> =
    std::to_array<std::string_view>({"begin", "continuePrevious", "endPreviousThenBegin"});

/// One posting of a glide.
struct ScrollStep {
    /// Time after the start of the plan in milliseconds, 0 to its duration.
    double offsetMillis = 0;
    /// Pixels of this step; the sign is the direction. 0 in a step that closes a gesture, and in no
    /// other.
    std::int64_t pixelDelta = 0;
    /// Whether the step counts pixels and not lines, as every step of the transformer's does.
    bool isContinuous = true;
    ScrollPhase phase = ScrollPhase::changed;
    /// Set only on the step that closes the gesture of an earlier plan, with the modifiers of that
    /// plan. Every other step is posted with the modifiers of its own plan.
    std::optional<ModifierFlags> modifiers = std::nullopt;

    bool operator==(const ScrollStep&) const = default;
};

/// The steps of one plan: a sequence that never changes once it is made, shared by the copies of
/// the plan.
///
/// The transformer keeps the plan it hands out, and the player keeps it too. Sharing makes a copy
/// of a plan free of the heap, and safe to read on any thread: the steps live until the last copy
/// goes. Equality compares the steps, not where they lie. Use a std::vector for steps that change.
class ScrollSteps {
  public:
    /// Fills one sequence, within room that is set aside at the start in a single allocation.
    class Builder;

    using value_type = ScrollStep;
    using const_iterator = const ScrollStep*;

    /// An empty sequence. It allocates nothing.
    ScrollSteps() = default;
    /// A sequence of the given steps, in one allocation.
    ScrollSteps(std::initializer_list<ScrollStep> steps);

    /// The steps lie one after the other. Iterators are valid as long as any copy of the sequence.
    [[nodiscard]] const_iterator begin() const { return steps_.get(); }
    [[nodiscard]] const_iterator end() const { return steps_.get() + size_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool empty() const { return size_ == 0; }
    /// The step at `index`, counted from 0. One that is not below `size()` stops the process.
    [[nodiscard]] const ScrollStep& operator[](std::size_t index) const;
    /// The first and the last step. An empty sequence has neither, and stops the process.
    [[nodiscard]] const ScrollStep& front() const { return (*this)[0]; }
    [[nodiscard]] const ScrollStep& back() const { return (*this)[size_ - 1]; }

    bool operator==(const ScrollSteps& other) const;

  private:
    ScrollSteps(std::shared_ptr<const ScrollStep[]> steps, std::size_t size);

    std::shared_ptr<const ScrollStep[]> steps_;
    std::size_t size_ = 0;
};

/// Not for more than one sequence, and used on one thread.
class ScrollSteps::Builder {
  public:
    /// Sets room aside for `capacity` steps, all there can be. This is the one allocation, and the
    /// room that is not used stays with the sequence.
    explicit Builder(std::size_t capacity);

    /// Adds a step at the end. When the room set aside is full it stops the process.
    void append(const ScrollStep& step);
    /// The sequence of all steps added, without a copy of them. The builder is spent.
    [[nodiscard]] ScrollSteps finish() &&;

  private:
    std::shared_ptr<ScrollStep[]> steps_;
    std::size_t capacity_;  // constant after construction
    std::size_t size_ = 0;
};

/// A glide: what one wheel event becomes, complete when it is made.
///
/// It says when each pixel is due and does not know what was really posted: that is kept by whoever
/// plays it. A plan never changes; a click that comes while it runs makes another plan that takes
/// its place. It is a value, cheap to copy, that any thread may read.
///
/// All times are milliseconds as doubles, on the clock of the inputs.
struct ScrollPlan {
    /// Unique per transformer, counted from 1 in the order of making.
    std::uint64_t id = 0;
    /// The axis of the input that made it.
    ScrollAxis axis = ScrollAxis::vertical;
    /// The modifiers of the input that made it, Caps Lock included.
    ModifierFlags modifiers = ModifierFlags::none;
    /// The device of the input that made it.
    DeviceID deviceID = DeviceID::unknown;
    /// The timestamp of the input that made it.
    double startTimestampMillis = 0;
    /// From the start to the last step, 1 to 5000 in what the transformer makes.
    double durationMillis = 0;
    /// The sum of all steps in pixels, never 0 in what the transformer makes: what was left of the
    /// plan before, and what the click itself asked for.
    std::int64_t totalPixelDelta = 0;
    /// The plan, still running, whose place this one takes. None of its steps that are yet to come
    /// may be posted.
    std::optional<std::uint64_t> supersedes = std::nullopt;
    GestureTransition gestureTransition = GestureTransition::begin;
    /// Where on the easing curve the plan starts, in time: 0 at the start of the curve, 1 at its
    /// end. A plan that takes over another goes on where that one stood.
    double easingStartProgress = 0;
    /// The time from one frame to the next. Frames are when a step may be due; one that the curve
    /// gives no whole pixel has none.
    double frameIntervalMillis = 0;
    /// The offset of the first frame, 0 to the interval. It lies on the grid of the plan before
    /// when that is taken over.
    double firstFrameOffsetMillis = 0;
    /// In the order of their offsets. The last one, at the duration, ends the gesture; the first
    /// one, at 0, closes the gesture before when the transition says so.
    ScrollSteps steps = {};

    /// When the last step is due. From that time on the plan counts as finished.
    [[nodiscard]] double endTimestampMillis() const {
        return startTimestampMillis + durationMillis;
    }

    bool operator==(const ScrollPlan&) const = default;
};

}  // namespace tessara
