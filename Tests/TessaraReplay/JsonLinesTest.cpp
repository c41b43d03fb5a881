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

TEST(JsonLines, stay_one_object_to_a_line_whatever_a_text_holds) {
    std::string text = "before\n";
    appendJsonLine(text, {.at = replayStart, .what = LaunchedApp{"a\"b\\c"}});
    appendJsonLine(text, {.at = replayStart, .what = FinalReset{}});
    appendJsonLine(text, {.at = replayStart, .what = RanShortcut{"tea\n\u00e9\xff"}});
    EXPECT_EQ(text, R"(before
{"t":1000.0,"effect":"launch","bundleID":"a\"b\\c"}
{"t":1000.0,"effect":"shortcut","name":"tea\né�"}
)");
}

}  // namespace
}  // namespace tessara
