#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TessaraCore/ScrollTransformer.h"

namespace tessara {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

ScrollInput click(double atMillis, std::int64_t lines = 1, ModifierFlags modifiers = {}) {
    return {.lineDelta = lines, .modifiers = modifiers, .timestampMillis = atMillis};
}

/// The plan that `input` becomes; fails the test when it becomes none.
ScrollPlan planOf(ScrollTransformer& transformer, const ScrollInput& input,
                  std::optional<std::int64_t> delivered = std::nullopt) {
    const ScrollOutcome outcome = transformer.transform(input, delivered);
    const auto* animate = std::get_if<ScrollAnimate>(&outcome);
    if (animate == nullptr) {
        ADD_FAILURE() << "no plan for the input at " << input.timestampMillis;
        return {};
    }
    return animate->plan;
}

std::int64_t sumOf(const ScrollSteps& steps) {
    return std::accumulate(
        steps.begin(), steps.end(), std::int64_t{0},
        [](std::int64_t sum, const ScrollStep& step) { return sum + step.pixelDelta; });
}

TEST(ScrollTransformer, one_click_glides_fifty_pixels_along_the_curve) {
    ScrollTransformer transformer{ScrollSettings{}};
    const ScrollPlan plan = planOf(transformer, click(0));

    EXPECT_EQ(plan.id, 1U);
    EXPECT_EQ(plan.totalPixelDelta, 50);
    EXPECT_EQ(plan.gestureTransition, GestureTransition::begin);
    EXPECT_EQ(plan.supersedes, std::nullopt);
    EXPECT_EQ(plan.firstFrameOffsetMillis, 8);

    const std::vector<std::int64_t> deltas{5, 4, 4, 4, 3, 4, 3, 2, 3, 2, 2,
                                           2, 2, 2, 1, 1, 1, 1, 1, 1, 1, 1};
    std::vector<ScrollStep> expected;
    for (std::size_t i = 0; i < deltas.size(); ++i) {
        const double offset = i < 20 ? 8.0 * static_cast<double>(i + 1) : i == 20 ? 176 : 200;
        expected.push_back({.offsetMillis = offset,
                            .pixelDelta = deltas[i],
                            .phase = i == 0 ? ScrollPhase::began : ScrollPhase::changed});
    }
    expected.push_back({.offsetMillis = 250, .phase = ScrollPhase::ended});
    EXPECT_THAT(plan.steps, ElementsAreArray(expected));
}

TEST(ScrollTransformer, a_second_click_carries_the_pixels_not_yet_delivered) {
    ScrollTransformer transformer{ScrollSettings{}};
    const ScrollPlan first = planOf(transformer, click(0));
    EXPECT_EQ(ScrollTransformer::deliveredPixels(first, 100), 38);
    const ScrollPlan second = planOf(transformer, click(100));

    EXPECT_EQ(second.totalPixelDelta, 12 + 110);
    EXPECT_EQ(second.easingStartProgress, 0.4);
    EXPECT_EQ(second.firstFrameOffsetMillis, 4);
    EXPECT_EQ(second.gestureTransition, GestureTransition::continuePrevious);
    EXPECT_EQ(second.supersedes, 1U);
    ASSERT_GE(second.steps.size(), 3U);
    EXPECT_EQ(second.steps[0],
              (ScrollStep{.offsetMillis = 4, .pixelDelta = 6, .phase = ScrollPhase::changed}));
    EXPECT_EQ(second.steps[1], (ScrollStep{.offsetMillis = 12, .pixelDelta = 11}));
    EXPECT_EQ(second.steps[2], (ScrollStep{.offsetMillis = 20, .pixelDelta = 10}));
    EXPECT_EQ(sumOf(second.steps), 122);
}

}  // namespace
}  // namespace tessara
