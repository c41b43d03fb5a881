#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "TessaraCore/PointerAccumulator.h"
#include "TessaraCore/PointerCurve.h"

namespace tessara {
namespace {

PointerCurve curveOf(double sensitivity, double exponent, double threshold, double maxGain) {
    return {.sensitivity = sensitivity,
            .acceleration = AccelerationCurve{
                .exponent = exponent, .thresholdCountsPerSecond = threshold, .maxGain = maxGain}};
}

TEST(PointerCurve, the_gain_is_flat_up_to_the_threshold_and_rises_to_its_ceiling) {
    struct Case {
        const char* name;
        PointerCurve curve;
        double speed;
        double gain;
    };
    const Case cases[] = {{"below the threshold", PointerCurve::desktop, 799, 1},
                          {"at the threshold", PointerCurve::desktop, 800, 1},
                          {"twice the threshold", PointerCurve::desktop, 1600, 2},
                          {"at the ceiling", PointerCurve::desktop, 4800, 6},
                          {"beyond the ceiling", PointerCurve::desktop, 1e9, 6},
                          {"no acceleration", PointerCurve::linear, 1e9, 1},
                          {"a square", curveOf(1, 2, 100, 1000), 300, 9},
                          {"the sensitivity goes on top", curveOf(0.5, 1, 100, 4), 1000, 2},
                          {"a negative sensitivity", curveOf(-2, 1, 100, 4), 1000, 0},
                          {"no exponent", curveOf(1, 0, 100, 4), 1000, 1},
                          {"a negative exponent", curveOf(1, -1, 100, 4), 1000, 1},
                          {"a ceiling below 1", curveOf(1, 1, 100, 0.25), 1000, 1},
                          {"a threshold of 0, at rest", curveOf(1, 1, 0, 4), 0, 1},
                          {"a threshold of 0, moving", curveOf(1, 1, 0, 4), 1e-3, 4},
                          {"a negative threshold", curveOf(1, 1, -50, 4), 1, 4}};
    for (const auto& [name, curve, speed, gain] : cases) {
        EXPECT_DOUBLE_EQ(curve.gain(speed), gain) << name;
    }
    EXPECT_NEAR(PointerCurve::desktop.gain(std::nextafter(800, 801)), 1, 1e-12);
}

TEST(PointerCurve, one_gain_from_the_speed_of_the_vector_serves_both_axes) {
    struct Case {
        const char* name;
        PointerCurve curve;
        PointerDelta delta;
        double intervalMillis;
        PointerDelta moved;
    };
    const Case cases[] = {{"5 counts in 1 ms", PointerCurve::desktop, {3, -4}, 1, {18, -24}},
                          {"5 counts in 3.125 ms", PointerCurve::desktop, {3, -4}, 3.125, {6, -8}},
                          {"slow", PointerCurve::desktop, {3, -4}, 100, {3, -4}},
                          {"no interval", PointerCurve::desktop, {3, -4}, 0, {3, -4}},
                          {"a negative interval", PointerCurve::desktop, {3, -4}, -1, {3, -4}},
                          {"no motion", PointerCurve::desktop, {0, 0}, 1, {0, 0}},
                          {"no motion in no time", PointerCurve::desktop, {0, 0}, 0, {0, 0}},
                          {"never reversed", curveOf(-3, 1, 1, 6), {3, -4}, 1, {0, 0}},
                          {"never reversed, no interval", curveOf(-3, 1, 1, 6), {3, -4}, 0, {0, 0}},
                          {"plain", PointerCurve::linear, {3, -4}, 1, {3, -4}}};
    for (const auto& [name, curve, delta, interval, moved] : cases) {
        const PointerDelta result = curve.apply(delta, interval);
        EXPECT_DOUBLE_EQ(result.dx, moved.dx) << name;
        EXPECT_DOUBLE_EQ(result.dy, moved.dy) << name;
    }
}

TEST(PointerAccumulator, fractions_wait_until_they_make_a_pixel) {
    struct Case {
        const char* name;
        std::vector<double> motions;
        std::vector<std::int64_t> pixels;
        double remainder;
    };
    const Case cases[] = {{"forward", {0.4, 0.4, 0.4}, {0, 0, 1}, 0.2},
                          {"backward", {-0.4, -0.4, -0.4}, {0, 0, -1}, -0.2},
                          {"to and fro", {0.6, -0.6, 0.6, -0.6}, {0, 0, 0, 0}, 0},
                          {"toward zero", {1.7, -1.8}, {1, -1}, -0.1},
                          {"large", {1000.5, 0.5}, {1000, 1}, 0}};
    for (const auto& [name, motions, pixels, remainder] : cases) {
        SCOPED_TRACE(name);
        PointerAccumulator accumulator{PointerCurve::linear};
        for (std::size_t i = 0; i < motions.size(); ++i) {
            const PointerPixels moved = accumulator.apply({motions[i], -motions[i]}, 8);
            EXPECT_EQ(moved, (PointerPixels{pixels[i], -pixels[i]})) << i;
        }
        EXPECT_NEAR(accumulator.remainderX(), remainder, 1e-12);
        EXPECT_NEAR(accumulator.remainderY(), -remainder, 1e-12);
    }
}

TEST(PointerAccumulator, a_new_curve_keeps_the_fractions_and_a_reset_drops_them) {
    PointerAccumulator accumulator{PointerCurve::linear};
    EXPECT_EQ(accumulator.apply({0.9, -0.9}, 8), PointerPixels{});
    accumulator.setCurve({.sensitivity = 0.5});
    EXPECT_EQ(accumulator.apply({0.2, -0.2}, 8), (PointerPixels{1, -1}));

    EXPECT_EQ(accumulator.apply({1.8, -1.8}, 8), PointerPixels{});
    accumulator.reset();
    EXPECT_EQ(accumulator.apply({0.2, -0.2}, 8), PointerPixels{});
}

}  // namespace
}  // namespace tessara
