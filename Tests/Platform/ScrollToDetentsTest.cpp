#include <limits>
#include <random>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Linux/ScrollToDetents.h"
#include "TessaraCore/ScrollTransformer.h"

namespace tessara {
namespace {

using Turn = ScrollToDetents::Turn;

TEST(ScrollToDetents, what_is_left_over_is_carried_and_dropped_when_the_direction_turns) {
    struct Step {
        std::int64_t pixels;
        Turn turn;
    };
    const std::vector<std::vector<Step>> cases{
        {{50, {120, 1}}, {-50, {-120, -1}}},
        {{1, {2, 0}}, {1, {2, 0}}, {1, {3, 0}}, {1, {2, 0}}, {1, {3, 0}}},
        {{49, {117, 0}}, {1, {3, 1}}},
        {{49, {117, 0}}, {0, {0, 0}}, {-1, {-2, 0}}, {-49, {-118, -1}}},
        {{-120, {-288, -2}}, {-30, {-72, -1}}},
        {{std::numeric_limits<std::int64_t>::min(), {-2'147'483'640, -17'895'697}}, {50, {120, 1}}},
    };
    for (const auto& steps : cases) {
        ScrollToDetents detents;
        for (const auto& [pixels, turn] : steps)
            EXPECT_EQ(detents.advance(pixels), turn) << pixels << " pixels";
    }
}

TEST(ScrollToDetents, glides_add_up_to_the_unit_over_random_hands) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
        std::mt19937 random(seed);
        const auto upTo = [&random](int most) {
            return std::uniform_int_distribution(0, most)(random);
        };
        ScrollTransformer transformer({.pixelsPerDetent = 1.0 + upTo(200)});
        ScrollToDetents detents;
        std::int64_t pixels = 0;
        std::int64_t units = 0;
        std::int64_t lines = 0;
        double now = 0;
        for (int click = 0; click < 40; ++click) {
            now += upTo(300);
            const bool isUp = seed % 2 == 0 || upTo(4) > 0;
            const auto outcome =
                transformer.transform({.lineDelta = isUp ? 1 : -1, .timestampMillis = now});
            const auto* animate = std::get_if<ScrollAnimate>(&outcome);
            ASSERT_NE(animate, nullptr);
            const std::int64_t total = animate->plan.totalPixelDelta;
            if ((total < 0) != (pixels < 0)) pixels = units = lines = 0;  // the direction turns
            for (const auto& step : animate->plan.steps) {
                const auto turn = detents.advance(step.pixelDelta);
                pixels += step.pixelDelta;
                units += turn.units;
                lines += turn.lines;
                ASSERT_EQ(units, pixels * 120 / 50) << "seed " << seed;
                ASSERT_EQ(lines, units / 120) << "seed " << seed;
            }
        }
    }
}

}  // namespace
}  // namespace tessara
