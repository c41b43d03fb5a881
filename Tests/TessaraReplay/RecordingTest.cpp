#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TessaraReplay/Recording.h"

namespace tessara {
namespace {

using std::chrono::microseconds;
using testing::StartsWith;

TEST(Recording, reads_older_and_newer_forms_of_a_line) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t greatest = std::numeric_limits<std::int32_t>::max();
    struct Case {
        std::string line;
        RecordedEvent event;
    };
    const std::vector<Case> cases{
        {"E: 1329846856.201613 0002 0001 -1", {microseconds(1329846856201613), 2, 1, -1}},
        {"E: 0.011366 0002 0001 -015\t# EV_REL / REL_Y   -15", {microseconds(11366), 2, 1, -15}},
        {"E: 0.000001 0001 0110 0001#pressed", {microseconds(1), 1, 0x110, 1}},
        {"E:\t0.000000  00FF\t00aB 0000  ", {microseconds(0), 0xff, 0xab, 0}},
        {"E: 0.000000 0003 0035 2147483647", {microseconds(0), 3, 0x35, greatest}},
        {"E: 0.000000 0003 0035 -0002147483648", {microseconds(0), 3, 0x35, least}},
        {"E: 9000000000.999999 ffff ffff 1", {microseconds(9000000000999999), 0xffff, 0xffff, 1}},
    };
    for (const Case& c : cases) {
        for (const std::string end : {"", "\n", "\r\n", "\n# the end\n\n"}) {
            const auto recording = parseRecording(c.line + end, "r");
            ASSERT_TRUE(recording) << recording.error().description();
            EXPECT_EQ(recording->events, std::vector{c.event}) << c.line;
        }
    }
}

TEST(Recording, skips_every_line_that_is_no_event) {
    const auto recording = parseRecording(
        "\xEF\xBB\xBF"
        "E: 0.000000 0000 0000 0\n\n# E: x\nN: a mouse\n E: y\nEvent\r\nE: 0.000000 0000 0000 1\n",
        "r");
    ASSERT_TRUE(recording);
    EXPECT_EQ(recording->events.size(), 2U);
}

TEST(Recording, names_the_line_and_the_reason_when_one_cannot_be_read) {
    struct Case {
        std::string line;
        std::string reason;
    };
    const std::vector<Case> cases{
        {"E:", "an event needs"},
        {"E: # 0.000000 0000 0000 0", "an event needs"},
        {"E: 1.000000 0002 0008 # 1", "an event needs"},
        {"E: 1.000000 0002 0008 1 1", "unexpected \"1\" after the value"},
        {"E: .000000 0002 0008 1", "the time"},
        {"E: 1.00000x 0002 0008 1", "the time"},
        {"E: -1.000000 0002 0008 1", "the time"},
        {"E: 1.-00001 0002 0008 1", "the time"},
        {"E: 9000000001.000000 0002 0008 1", "the time \"9000000001.000000\" lies beyond"},
        {"E: 1.000000 02 0008 1", "the type \"02\" is not four"},
        {"E: 1.000000 000g 0008 1", "the type"},
        {"E: 1.000000 -002 0008 1", "the type"},
        {"E: 1.000000 0002 008 1", "the code \"008\" is not four"},
        {"E: 1.000000 0002 0008 2147483648", "the value \"2147483648\" does not fit 32 bits"},
        {"E: 1.000000 0002 0008 -2147483649", "the value \"-2147483649\" does not fit"},
        {"E: 1.000000 0002 0008 99999999999999999999999", "the value"},
        {"E: 1.000000 0002 0008 +1", "the value \"+1\" is not a whole"},
        {"E: 1.000000 0002 0008 1.0", "the value \"1.0\" is not a whole"},
        {"E: 1.000000 0002 0008 -", "the value"},
        {"E: 0.999999 0002 0008 1", "the time goes back from 1.000000 to 0.999999"},
        {"E: \x1b[31m" + std::string(100, 'x') + " 1 1 1", "the time \"?[31mxxxxxxxx"},
    };
    for (const Case& c : cases) {
        const auto recording = parseRecording(
            "a mouse\nE: 1.000000 0000 0000 0\n" + c.line + "\nE: ?", "dir/r.events");
        ASSERT_FALSE(recording) << c.line;
        EXPECT_EQ(recording.error().line, 3U);
        EXPECT_THAT(recording.error().description(), StartsWith("dir/r.events:3: " + c.reason));
    }
}

TEST(Recording, has_to_have_an_event) {
    for (const std::string text : {"", "\n", "# EVEMU 1.3\nN: a mouse\n"}) {
        const auto recording = parseRecording(text, "r");
        ASSERT_FALSE(recording);
        EXPECT_THAT(recording.error().description(), StartsWith("r: the recording is empty"));
    }
}

}  // namespace
}  // namespace tessara
