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

/// Where a step stands in the gesture that applications see.
enum class ScrollPhase : std::uint8_t { began, changed, ended };

template <>
inline constexpr auto rawValues<ScrollPhase> =
    std::to_array<std::string_view>({"began", "changed", "ended"});

/// How a plan relates to the gesture that applications see.
enum class GestureTransition : std::uint8_t {
    begin,                ///< it starts a new gesture
    continuePrevious,     ///< it goes on with the one under way
    endPreviousThenBegin  ///< it closes the one under way, then starts a new one
};

template <>
inline constexpr auto rawValues<GestureTransition> =
    std::to_array<std::string_view>({"begin", "continuePrevious", "endPreviousThenBegin"});

/// One posting of a glide.
struct ScrollStep {
    /// Time after the start of the plan.
    double offsetMillis = 0;
    /// Pixels of this step; the sign is the direction.
    std::int64_t pixelDelta = 0;
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
/// of a plan free of the heap, and safe to read on any thread. Equality compares the steps.
class ScrollSteps {
  public:
    /// Fills one sequence, within room that is set aside at the start in a single allocation.
    class Builder;

    using value_type = ScrollStep;
    using const_iterator = const ScrollStep*;

    /// An empty sequence, and one of the given steps.
    ScrollSteps() = default;
    ScrollSteps(std::initializer_list<ScrollStep> steps);

    [[nodiscard]] const_iterator begin() const { return steps_.get(); }
    [[nodiscard]] const_iterator end() const { return steps_.get() + size_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool empty() const { return size_ == 0; }
    /// The step at `index`, which must be below `size()`.
    [[nodiscard]] const ScrollStep& operator[](std::size_t index) const;
    /// The first and the last step of a sequence that is not empty.
    [[nodiscard]] const ScrollStep& front() const { return (*this)[0]; }
    [[nodiscard]] const ScrollStep& back() const { return (*this)[size_ - 1]; }

    bool operator==(const ScrollSteps& other) const;

  private:
    ScrollSteps(std::shared_ptr<const ScrollStep[]> steps, std::size_t size);

    std::shared_ptr<const ScrollStep[]> steps_;
    std::size_t size_ = 0;
};

class ScrollSteps::Builder {
  public:
    /// Sets room aside for `capacity` steps, all there can be.
    explicit Builder(std::size_t capacity);

    /// Adds a step. The room set aside must not be full.
    void append(const ScrollStep& step);
    /// The sequence of all steps added. The builder is spent.
    [[nodiscard]] ScrollSteps finish() &&;

  private:
    std::shared_ptr<ScrollStep[]> steps_;
    std::size_t capacity_;  // constant after construction
    std::size_t size_ = 0;
};

/// A glide: what one wheel event becomes, complete when it is made.
struct ScrollPlan {
    /// Unique per transformer.
    std::uint64_t id = 0;
    ScrollAxis axis = ScrollAxis::vertical;
    /// The modifiers of the input that made it, Caps Lock included.
    ModifierFlags modifiers = ModifierFlags::none;
    DeviceID deviceID = DeviceID::unknown;
    /// The timestamp of the input that made it.
    double startTimestampMillis = 0;
    double durationMillis = 0;
    /// The sum of all steps, never 0 in what the transformer makes.
    std::int64_t totalPixelDelta = 0;
    /// The plan, still running, whose place this one takes.
    std::optional<std::uint64_t> supersedes = std::nullopt;
    GestureTransition gestureTransition = GestureTransition::begin;
    /// Where on the easing curve the plan starts, in time: 0 at the start of the curve, 1 at its
    /// end.
    double easingStartProgress = 0;
    double frameIntervalMillis = 0;
    /// The offset of the first frame, which need not have a step.
    double firstFrameOffsetMillis = 0;
    /// In the order of their offsets. The last one ends the gesture.
    ScrollSteps steps = {};

    /// When the last step is due. From that time on the plan counts as finished.
    [[nodiscard]] double endTimestampMillis() const {
        return startTimestampMillis + durationMillis;
    }

    bool operator==(const ScrollPlan&) const = default;
};

}  // namespace tessara
