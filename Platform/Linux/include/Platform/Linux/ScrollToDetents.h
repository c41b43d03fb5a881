#pragma once

#include <cstdint>

#include <linux/input-event-codes.h>

namespace tessara {

/// The kernel's codes for one of the two wheels, and which way it counts.
struct WheelCodes {
    std::uint16_t lines;
    std::uint16_t highResolution;
    /// What turns an event's delta into the kernel's value, and back. Both count up as positive;
    /// but an event counts left as positive and the kernel right.
    std::int32_t sign;
};

inline constexpr WheelCodes verticalWheel{
    .lines = REL_WHEEL, .highResolution = REL_WHEEL_HI_RES, .sign = 1};
inline constexpr WheelCodes horizontalWheel{
    .lines = REL_HWHEEL, .highResolution = REL_HWHEEL_HI_RES, .sign = -1};

/// What the high-resolution axis of a wheel counts for one detent.
inline constexpr std::int32_t unitsPerDetent = 120;

/// How far a detent of a wheel scrolls by this program's reckoning, in pixels.
inline constexpr std::int32_t pixelsPerDetent = 50;

/// Turns a glide's pixels into the turning of a wheel: high-resolution units of 1/120 detent, and a
/// line each time a whole detent has gone by. One axis; no clock, no output.
///
/// Nothing is lost to rounding: the units given out are the whole units of all pixels put in, and
/// the lines the whole detents of all units. What is left over is carried to the next step, and
/// dropped when the direction turns.
class ScrollToDetents {
  public:
    struct Turn {
        std::int32_t units = 0;
        std::int32_t lines = 0;
        bool operator==(const Turn&) const = default;
    };

    /// The turn of the wheel for that many pixels, of the same sign. More than a turn's numbers can
    /// hold (some 890 million pixels) is limited.
    [[nodiscard]] Turn advance(std::int64_t pixels);

    /// The wheel has turned that way by itself: what was left over of the other way is dropped.
    void noteDirection(std::int64_t signedAmount);

  private:
    /// What is left over of the last unit, in 1/`pixelsPerDetent` of it.
    std::int64_t unitRemainder_ = 0;
    /// The units since the last whole detent.
    std::int64_t lineRemainder_ = 0;
};

}  // namespace tessara
