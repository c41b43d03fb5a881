#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TessaraReplay/ReplayPlot.h"

namespace tessara {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr TimePoint at(std::int64_t millis) {
    return replayStart + std::chrono::milliseconds(millis);
}

void addClick(ReplayPlot& plot, std::int64_t millis, std::int64_t lines) {
    plot.add({.at = at(millis), .what = HandledWheel{.turn = {.lines = lines}, .passes = false}});
}

void addStep(ReplayPlot& plot, std::int64_t millis, std::int64_t pixels, ScrollPhase phase) {
    plot.add({.at = at(millis), .what = PostedScroll{.pixels = pixels, .phase = phase}});
}

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto found = text.find(part); found != std::string::npos;
         found = text.find(part, found + 1))
        ++count;
    return count;
}

TEST(ReplayPlot, puts_clicks_and_pixels_where_their_values_are) {
    ReplayPlot plot;
    plot.begin("a hand");
    addClick(plot, 0, -2);
    addStep(plot, 0, -40, ScrollPhase::began);
    addStep(plot, 500, -60, ScrollPhase::changed);
    addStep(plot, 1000, 0, ScrollPhase::ended);
    addClick(plot, 1000, 1);
    const std::string svg = plot.svg();
    // Time runs from -30 to 1030 ms over the 848 pixels from 84 to 932: 0 ms is at 108, 500 in the
    // middle, 1000 at 908. Pixels run from -100 up to 0 between 300 and 84, lines from -2 to 1
    // between 404 and 324.
    EXPECT_THAT(svg,
                HasSubstr("d=\"M108.00 84.00H108.00V170.40H508.00V300.00H908.00V300.00H932.00\""));
    EXPECT_THAT(svg, HasSubstr("d=\"M108.00 350.67V404.00\""));
    EXPECT_THAT(svg, HasSubstr("d=\"M908.00 350.67V324.00\""));
    EXPECT_THAT(svg, HasSubstr("<rect class=\"glide\" x=\"108.00\" y=\"84\" width=\"800.00\""));
    EXPECT_THAT(svg, HasSubstr(">\u2212100</text>"));
    EXPECT_THAT(svg, HasSubstr(">time since the first event, in milliseconds</text>"));
    EXPECT_THAT(svg, HasSubstr("prefers-color-scheme: dark"));
}

TEST(ReplayPlot, has_a_panel_for_each_recording_with_or_without_a_wheel) {
    ReplayPlot plot;
    plot.begin("<a> & b");
    addClick(plot, 0, 1);
    plot.begin("still");
    plot.add({.at = at(5000), .what = HandledMotion{}});
    const std::string svg = plot.svg();
    EXPECT_EQ(occurrences(svg, "<g transform"), 2U);
    EXPECT_EQ(occurrences(svg, "class=\"title\""), 2U);
    EXPECT_THAT(svg, HasSubstr("&lt;a&gt; &amp; b"));
    EXPECT_EQ(occurrences(svg, "The wheel was not turned"), 1U);
    EXPECT_THAT(svg, HasSubstr("in seconds</text>"));
}

TEST(ReplayPlot, stays_small_and_true_over_hours_of_scrolling) {
    ReplayPlot plot;
    plot.begin("a day");
    constexpr std::int64_t hour = 3'600'000;
    for (std::int64_t t = 0; t < 8 * hour; t += 1000) {
        addClick(plot, t, t == 4 * hour ? 9 : (t / 1000 % 2 == 0 ? 1 : -1));
        addStep(plot, t + 10, 1, ScrollPhase::began);
        addStep(plot, t + 100, 0, ScrollPhase::ended);
    }
    const std::string svg = plot.svg();
    EXPECT_LT(svg.size(), 1'500'000U);
    EXPECT_THAT(svg, HasSubstr("in hours</text>"));
    // The one high click among 28,800 is not thinned out: its pin reaches above all others.
    EXPECT_EQ(occurrences(svg, "cy=\"329.33\""), 1U);
    EXPECT_EQ(occurrences(svg, "<rect class=\"glide\""), 2U) << "one field, and one in the legend";
    EXPECT_THAT(svg, Not(HasSubstr("nan")));
}

}  // namespace
}  // namespace tessara
