#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TessaraCore/Config.h"
#include "TessaraReplay/FrameAssembler.h"
#include "TessaraReplay/JsonLines.h"
#include "TessaraReplay/ReplayPlayer.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;

constexpr TimePoint at(std::int64_t millis) {
    return TimePoint(milliseconds(millis));
}

/// A profile in which button 3 does `action`.
Profile bound(Action action) {
    Profile profile = Profile::default_();
    profile.buttons = {{.button = 3, .action = std::move(action)}};
    return profile;
}

ReplayInput press(std::int64_t millis, bool isDown = true) {
    return {.at = at(millis), .what = ButtonChange{.number = 3, .isDown = isDown}};
}

std::string played(std::vector<ReplayInput> inputs, const Profile& profile,
                   TimePoint end = at(2000)) {
    std::string lines;
    Config config = Config::default_();
    config.profiles = {profile};
    play({.inputs = std::move(inputs), .end = end},
         {.config = config, .frontmostBundleID = std::nullopt}, [&](const ReplayRecord& record) {
             if (!std::holds_alternative<ReceivedEvent>(record.what)) appendJsonLine(lines, record);
         });
    return lines;
}

const std::string pressed1000 =
    R"({"t":1000.0,"event":"button","number":3,"down":true,"verdict":"suppress"})"
    "\n";

TEST(ReplayPlayer, prints_an_input_ahead_of_what_it_causes_and_that_ahead_of_the_next_input) {
    EXPECT_EQ(played({press(1000), press(1000, false)},
                     bound(KeyStrokeAction{.code = 8, .modifiers = ModifierFlags::command})),
              pressed1000 +
                  R"({"t":1000.0,"post":"key","code":8,"down":true,"modifiers":16}
{"t":1000.0,"post":"key","code":8,"down":false,"modifiers":16}
{"t":1000.0,"event":"button","number":3,"down":false,"verdict":"suppress"}
)");
}

TEST(ReplayPlayer, hands_applications_and_shortcuts_to_the_outside) {
    EXPECT_EQ(
        played({press(1000)}, bound(LaunchAppAction{.bundleID = "org.example.editor"})),
        pressed1000 + R"({"t":1000.0,"effect":"launch","bundleID":"org.example.editor"})" + "\n");
    EXPECT_EQ(played({press(1000)}, bound(RunShortcutAction{.name = "Tea"})),
              pressed1000 + R"({"t":1000.0,"effect":"shortcut","name":"Tea"})" + "\n");
}

TEST(ReplayPlayer, waits_ten_seconds_for_a_macro_and_not_a_moment_longer) {
    struct Case {
        double delay;
        std::string lines;
    };
    // The key is down from the start; either the macro releases it, or the reset does.
    for (const Case& c : std::vector<Case>{
             {1000, R"({"t":2000.0,"post":"key","code":8,"down":false,"modifiers":0})"},
             {10999.999999,
              R"({"t":11999.999999,"post":"key","code":8,"down":false,"modifiers":0})"},
             {11000, R"({"t":12000.0,"post":"key","code":8,"down":false,"modifiers":0})"
                     "\n"
                     R"({"t":12000.0,"post":"key","code":9,"down":true,"modifiers":0})"
                     "\n"
                     R"({"t":12000.0,"post":"key","code":9,"down":false,"modifiers":0})"},
             {11000.000001, R"({"t":12000.0,"post":"key","code":8,"down":false,"modifiers":0})"},
         }) {
        SequenceAction sequence{
            .steps = {KeyDownStep{.code = 8}, DelayStep{.millis = c.delay}, KeyUpStep{.code = 8}}};
        if (c.delay == 11000) sequence.steps.push_back(KeyStep{.code = 9});
        EXPECT_EQ(played({press(1000)}, bound(sequence)),
                  pressed1000 + R"({"t":1000.0,"post":"key","code":8,"down":true,"modifiers":0})" +
                      "\n" + c.lines + "\n");
    }
}

TEST(ReplayPlayer, waits_for_work_that_a_released_repeat_left_and_not_for_its_timer) {
    const Profile profile =
        bound(RepeatWhileHeldAction{.step = MouseButtonStep{.number = 4}, .intervalMillis = 300});
    const std::string click = R"("post":"button","number":4,"down":)";
    const auto clicks = [&](const std::string& t) {
        return "{\"t\":" + t + "," + click + "true}\n{\"t\":" + t + "," + click + "false}\n";
    };
    const std::string start = pressed1000 + clicks("1000.0") + clicks("1300.0");

    EXPECT_EQ(played({press(1000), press(1400, false)}, profile, at(1400)),
              start +
                  R"({"t":1400.0,"event":"button","number":3,"down":false,"verdict":"suppress"})" +
                  "\n");

    std::string held = start;
    for (int t = 1600; t <= 11300; t += 300)
        held += clicks(std::to_string(t) + ".0");
    EXPECT_EQ(played({press(1000)}, profile, at(1300)), held);
}

}  // namespace
}  // namespace tessara
