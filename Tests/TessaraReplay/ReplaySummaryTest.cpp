#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "TessaraReplay/ReplaySummary.h"

namespace tessara {
namespace {

TEST(ReplaySummary, counts_what_happened_and_tells_what_is_left_held) {
    using enum ScrollAxis;
    using enum ScrollPhase;
    ReplaySummary summary("hand.events", 21, 50, 2000);
    const std::vector<std::pair<int, decltype(ReplayRecord::what)>> records{
        {1000, HandledWheel{{vertical, -2}, false}},
        {1000, HandledWheel{{vertical, 9}, true}},
        {1008, PostedScroll{vertical, -60, began}},
        {1010, PostedScroll{horizontal, 1, began}},
        {1250, PostedScroll{vertical, -40, changed}},
        {1250, PostedScroll{vertical, 0, ended}},
        {1300, PostedScroll{vertical, 5, began}},
        {1310, PostedScroll{vertical, 0, ended}},
        {1400, HandledMotion{{3, -4}, {6, -8}}},
        {1500, HandledButton{{3, true}, false}},
        {1500, PostedKey{8, true}},
        {1510, HandledButton{{4, true}, true}},
        {1520, HandledButton{{0, true}, true}},
        {1530, HandledButton{{0, false}, true}},
        {1540, RequestedDPI{400}},
        {1550, LaunchedApp{"org.editor"}},
        {1560, RanShortcut{"Tea"}},
        {1700, FinalReset{}},
        {1700, PostedKey{8, false}},
        {1700, PostedButton{6, true}},
        {1700, RequestedDPI{2000}}};
    for (const auto& [millis, what] : records)
        summary.add({.at = TimePoint(std::chrono::milliseconds(millis)), .what = what});
    EXPECT_EQ(summary.text(), R"(hand.events
  events        21 in 0.700 s: 2 wheel, 4 button and 1 motion inputs
  wheel         2 lines in, 100 pixels unaccelerated; 1 inputs passed on
  glides        3 in 6 steps, 106 pixels out
  longest glide 0.242 s and 100 pixels, from 0.008 s
  motion        7 counts in, 14 pixels out
  keys          1 pressed and 1 released by the program
  buttons       3 pressed and 1 released by hand, 1 and 0 by the program
  side effects  2 changes of resolution, 1 applications, 1 shortcuts
  left held     button 3, button 4, key 8, horizontal glide, 400 DPI at the end, )"
                              "button 4, button 6, horizontal glide after the reset\n");
}

}  // namespace
}  // namespace tessara
