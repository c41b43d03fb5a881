#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "TessaraReplay/JsonLines.h"
#include "TessaraReplay/ReplayRecord.h"

namespace tessara {
namespace {

TEST(JsonLines, print_a_moment_exactly_and_no_longer_than_needed) {
    const std::vector<std::pair<std::int64_t, std::string>> cases{
        {0, "0.0"},
        {1, "0.000001"},
        {999'999, "0.999999"},
        {1'000'000'000, "1000.0"},
        {1'003'250'000, "1003.25"},
        {1'012'499'999, "1012.499999"},
        {1'000'000'100, "1000.0001"},
        {9'000'000'001'000'000'000, "9000000001000.0"},
    };
    for (const auto& [nanos, text] : cases)
        EXPECT_EQ(exactMillis(TimePoint(std::chrono::nanoseconds(nanos))), text);
}

TEST(JsonLines, hold_one_object_each_with_its_members_in_order) {
    using enum ScrollAxis;
    struct Case {
        decltype(ReplayRecord::what) what;
        std::string members;
    };
    const std::vector<Case> cases{
        {HandledMotion{{3, -1}, {2, -1}},
         R"("event":"motion","dx":3,"dy":-1,"outDx":2,"outDy":-1,"verdict":"pass")"},
        {PostedScroll{horizontal, 5, ScrollPhase::began, ModifierFlags::command},
         R"("post":"scroll","axis":"horizontal","pixels":5,"phase":"began","modifiers":16)"},
        {RequestedDPI{400}, R"("effect":"dpi","value":400)"},
        {LaunchedApp{"a\"b\\c"}, R"("effect":"launch","bundleID":"a\"b\\c")"},
        {RanShortcut{"tea\n\u00e9\xff"}, "\"effect\":\"shortcut\",\"name\":\"tea\\n\u00e9\ufffd\""},
    };
    for (const Case& c : cases) {
        std::string text = "before\n";
        appendJsonLine(text, {.at = replayStart, .what = c.what});
        EXPECT_EQ(text, "before\n{\"t\":1000.0," + c.members + "}\n");
    }
    std::string text;
    appendJsonLine(text, {.at = replayStart, .what = FinalReset{}});
    EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace tessara
