#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "TessaraReplay/ReplaySummary.h"

namespace tessara {
namespace {

using enum ScrollAxis;
using enum ScrollPhase;
using What = decltype(ReplayRecord::what);

constexpr TimePoint at(std::int64_t millis) {
    return TimePoint(std::chrono::milliseconds(millis));
}

TEST(ReplaySummary, adds_up_what_happened) {
    ReplaySummary summary("hand.events", 42, 50, 2000);
    const std::vector<std::pair<std::int64_t, What>> records{
        {1000, HandledWheel{{vertical, -2}, false}},
        {1000, HandledWheel{{vertical, 0}, true}},
        {1010, PostedScroll{vertical, -30, began, {}}},
        {1020, HandledWheel{{horizontal, 1}, false}},
        {1030, PostedScroll{horizontal, 50, began, {}}},
        {1040, PostedScroll{vertical, -70, changed, {}}},
        {1050, PostedScroll{vertical, 0, ended, {}}},
        {1130, PostedScroll{horizontal, 0, ended, {}}},
        {1140, HandledMotion{{3, -4}, {6, -9}}},
        {1150, HandledButton{{3, true}, false}},
        {1150, PostedKey{8, true, {}}},
        {1150, PostedButton{4, true}},
        {1160, HandledButton{{3, false}, false}},
        {1160, PostedButton{4, false}},
        {1170, LaunchedApp{"org.example.editor"}},
        {1170, RanShortcut{"Tea"}},
        {1500, FinalReset{}},
        {1500, PostedKey{8, false, {}}},
    };
    for (const auto& [millis, what] : records)
        summary.add({.at = at(millis), .what = what});
    EXPECT_EQ(summary.text(),
              R"(hand.events
  events        42 in 0.500 s: 3 wheel, 2 button and 1 motion inputs
  wheel         3 lines in, 150 pixels unaccelerated; 1 inputs passed on
  glides        2 in 5 steps, 150 pixels out
  longest glide 0.100 s and 50 pixels, from 0.030 s
  motion        7 counts in, 15 pixels out
  keys          1 pressed and 1 released by the program
  buttons       1 pressed and 1 released by hand, 1 and 1 by the program
  side effects  0 changes of resolution, 1 applications, 1 shortcuts
  left held     key 8 at the end, nothing after the reset
)");
}

TEST(ReplaySummary, names_everything_that_is_held) {
    const std::vector<std::pair<What, std::string>> steps{
        {HandledButton{{0, true}, true}, "button 0"},
        {HandledButton{{5, true}, false}, "button 0, button 5"},
        {RequestedDPI{400}, "button 0, button 5, 400 DPI"},
        {PostedKey{8, true, {}}, "button 0, button 5, key 8, 400 DPI"},
        {PostedButton{4, true}, "button 0, button 4, button 5, key 8, 400 DPI"},
        {PostedScroll{horizontal, 1, began, {}},
         "button 0, button 4, button 5, key 8, horizontal glide, 400 DPI"},
        // What only the hand holds is no longer the program's business.
        {FinalReset{}, "button 0, button 4, key 8, horizontal glide, 400 DPI"},
        {PostedButton{0, false}, "button 4, key 8, horizontal glide, 400 DPI"},
        {RequestedDPI{2000}, "button 4, key 8, horizontal glide"},
        {PostedScroll{horizontal, 0, ended, {}}, "button 4, key 8"},
        {PostedKey{8, false, {}}, "button 4"},
        {PostedButton{4, false}, "nothing"},
    };
    ReplayHoldings holdings(2000);
    for (const auto& [what, description] : steps) {
        holdings.add({.at = at(1000), .what = what});
        EXPECT_EQ(holdings.description(), description);
    }
}

}  // namespace
}  // namespace tessara
