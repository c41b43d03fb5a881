#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/CGPointerCursor.h"

namespace tessara {
namespace {

class CGPointerCursorTest : public testing::VirtualTimeTest {
  protected:
    SimulatedDesktop desktop{dispatcher};
};

TEST_F(CGPointerCursorTest, a_step_off_the_displays_ends_at_the_nearest_pixel_of_the_nearest_one) {
    const std::vector<CGRect> one{{.x = 0, .y = 0, .width = 100, .height = 100}};
    // Two displays with a gap of 100 points between them, the right one lower by 50.
    const std::vector<CGRect> apart{{.x = 0, .y = 0, .width = 100, .height = 100},
                                    {.x = 200, .y = 50, .width = 100, .height = 100}};
    const std::vector<CGRect> withAnEmptyOne{{.x = 50, .y = 200, .width = 0, .height = 100},
                                             {.x = 0, .y = 0, .width = 100, .height = 100}};
    const struct {
        const char* name;
        std::vector<CGRect> displays;
        CGPoint from;
        std::int64_t dx;
        std::int64_t dy;
        CGPoint to;
    } rows[] = {
        {"on the display", one, {.x = 10, .y = 10}, 5, -3, {.x = 15, .y = 7}},
        {"to the last pixel", one, {.x = 10, .y = 10}, 89, 89, {.x = 99, .y = 99}},
        {"one beyond it", one, {.x = 10, .y = 10}, 90, 90, {.x = 99, .y = 99}},
        {"out of the other corner", one, {.x = 10, .y = 10}, -500, -500, {.x = 0, .y = 0}},
        {"over the gap", apart, {.x = 99, .y = 60}, 110, 0, {.x = 209, .y = 60}},
        {"into the near side of the gap", apart, {.x = 99, .y = 60}, 40, 0, {.x = 99, .y = 60}},
        {"into the far side of the gap", apart, {.x = 99, .y = 60}, 60, 0, {.x = 200, .y = 60}},
        // From (99, 60) by 50.5 would be the middle; (149.5) is as far from 99 as from 200.
        {"as near to both, the first", apart, {.x = 99.5, .y = 60}, 50, 0, {.x = 99, .y = 60}},
        {"past a display without extent",
         withAnEmptyOne,
         {.x = 50, .y = 99},
         0,
         101,
         {.x = 50, .y = 99}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        desktop.displays().arrange(row.displays);
        desktop.displays().moveCursor(row.from);
        CGPointerCursor cursor(desktop.eventServices(), desktop.displays());
        EXPECT_EQ(cursor.move(row.dx, row.dy), row.to);
        EXPECT_EQ(desktop.displays().cursor(), row.to);
    }
}

TEST_F(CGPointerCursorTest, a_system_that_refuses_leaves_the_cursor_where_it_is) {
    CGPointerCursor cursor(desktop.eventServices(), desktop.displays());
    const CGPoint before = desktop.displays().cursor();
    desktop.eventServices().refuseEvents(1);
    EXPECT_EQ(cursor.move(1, 1), std::nullopt);
    desktop.displays().refuseWarps(1);
    EXPECT_EQ(cursor.move(1, 1), std::nullopt);
    desktop.displays().refuseDisplayQueries(2);
    EXPECT_EQ(cursor.move(1, 1), std::nullopt);
    EXPECT_EQ(desktop.displays().cursor(), before);
    desktop.displays().refuseDisplayQueries(1);
    EXPECT_EQ(cursor.move(1, 1), (CGPoint{.x = before.x + 1, .y = before.y + 1}))
        << "the list of displays answers in the place of the first question";

    desktop.displays().arrange({});
    EXPECT_EQ(cursor.move(1, 1), std::nullopt);

    desktop.eventServices().refuseSources(1);
    CGPointerCursor withoutSource(desktop.eventServices(), desktop.displays());
    desktop.displays().arrange({{.x = 0, .y = 0, .width = 100, .height = 100}});
    EXPECT_EQ(withoutSource.move(1, 1), std::nullopt);
}

}  // namespace
}  // namespace tessara
