#include <optional>

#include <gtest/gtest.h>

#include "TessaraApp/Interface/GlideChart.h"
#include "TessaraCore/ScrollPlan.h"

namespace tessara {
namespace {

TEST(GlideChart, draws_the_steps_from_the_lower_left_corner_to_the_upper_right_one) {
    const ScrollPlan plan{.durationMillis = 100,
                          .totalPixelDelta = -40,
                          .steps = {{.offsetMillis = 25, .pixelDelta = -30},
                                    {.offsetMillis = 50, .pixelDelta = -10},
                                    {.offsetMillis = 120, .pixelDelta = 0}}};
    EXPECT_EQ(GlideChart::lineOf(plan, {216, 116}),
              (QPolygonF{{8, 108}, {58, 33}, {108, 8}, {208, 8}}));
    EXPECT_EQ(GlideChart::lineOf(plan, {4, 4}),
              (QPolygonF{{8, -4}, {8.25, -4.75}, {8.5, -5}, {9, -5}}))
        << "a canvas smaller than its margins";

    ScrollPlan still = plan;
    still.totalPixelDelta = 0;
    ScrollPlan timeless = plan;
    timeless.durationMillis = 0;
    for (const std::optional<ScrollPlan>& none :
         {std::optional<ScrollPlan>(), std::optional(still), std::optional(timeless)})
        EXPECT_TRUE(GlideChart::lineOf(none, {216, 116}).isEmpty());
}

}  // namespace
}  // namespace tessara
