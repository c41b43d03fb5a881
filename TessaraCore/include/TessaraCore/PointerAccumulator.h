#pragma once

#include <cstdint>

#include "TessaraCore/PointerCurve.h"

namespace tessara {

/// A motion of the cursor in whole pixels.
struct PointerPixels {
    std::int64_t dx = 0;  ///< positive to the right
    std::int64_t dy = 0;  ///< positive downward

    bool operator==(const PointerPixels&) const = default;
};

/// Makes whole pixels of what the curve yields and keeps the fractions for the next report, so that
/// slow motion is held back until it makes a pixel, and none of it is lost. It measures no time and
/// moves no cursor: the pointer pipeline does both.
///
/// A value without a lock; its owner sees to it that one thread at a time uses it. No operation
/// allocates.
class PointerAccumulator {
  public:
    /// An accumulator that holds nothing back yet.
    explicit PointerAccumulator(const PointerCurve& curve) : curve_(curve) {}

    [[nodiscard]] const PointerCurve& curve() const { return curve_; }
    /// Takes effect at the next `apply`. The remainders stay.
    void setCurve(const PointerCurve& curve) { curve_ = curve; }

    /// The fractions of a pixel held back, each below 1 in absolute value and with the sign of the
    /// motion that left it.
    [[nodiscard]] double remainderX() const { return remainderX_; }
    [[nodiscard]] double remainderY() const { return remainderY_; }

    /// The whole pixels that a report of the mouse moves the cursor by: what the curve makes of
    /// `delta`, in counts, and what was held back, cut off toward zero. What is cut off is held
    /// back in turn. `intervalMillis` is the time since the report before; 0 or less where it is
    /// not known. A result that is not finite or fits no integer stops the process.
    [[nodiscard]] PointerPixels apply(const PointerDelta& delta, double intervalMillis);

    /// Drops the fractions, for when the stream of motion is broken: they belong to no later
    /// motion.
    void reset();

    bool operator==(const PointerAccumulator&) const = default;

  private:
    PointerCurve curve_;
    double remainderX_ = 0;
    double remainderY_ = 0;
};

}  // namespace tessara
