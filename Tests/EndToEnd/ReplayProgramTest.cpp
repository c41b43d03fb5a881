#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Paths.h"
#include "ProgramRun.h"
#include "Support/TemporaryFolder.h"
#include "TessaraCore/Config.h"

namespace tessara {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string sources = TESSARA_SOURCE_DIR;

ProgramRun replay(const std::vector<std::string>& arguments) {
    return runProgram(TESSARA_REPLAY_PROGRAM, arguments);
}

TEST(ReplayProgram, prints_line_for_line_what_was_worked_out_by_hand) {
    const std::string folder = sources + "/Tests/EndToEnd/data/";
    const ProgramRun run = replay({folder + "details.events"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, readWhole(folder + "details.jsonl"));
}

TEST(ReplayProgram, starts_each_recording_of_a_command_from_nothing) {
    const std::string glide = sources + "/Recordings/glide.events";
    const std::string demo = sources + "/Recordings/demo.events";
    const std::string apart = replay({glide}).out + replay({demo}).out + replay({glide}).out;
    EXPECT_EQ(replay({glide, demo, glide}).out, apart);
}

TEST(ReplayProgram, plays_nothing_when_any_recording_of_a_command_is_bad) {
    struct Case {
        std::string text;
        std::string error;
    };
    const std::string good = "E: 1.000000 0002 0008 1\n";
    const std::vector<Case> cases{
        {good + "E: 1.00000 0002 0008 1\n",
         ":2: the time \"1.00000\" is not seconds with exactly six"},
        {"a mouse\n\nE: 1 0002 0008 1", ":3: the time \"1\" is not seconds"},
        {good + "E: 0.999999 0002 0008 1", ":2: the time goes back from 1.000000 to 0.999999"},
        {"E: 1.000000 2 0008 1\r\n", ":1: the type \"2\" is not four hexadecimal digits"},
        {"E: 1.000000 0002 0008 2147483648", ":1: the value \"2147483648\" does not fit 32 bits"},
        {"E: 1.000000 0002 0008", ":1: an event needs a time, a type, a code and a value"},
        {"E: 1.000000 0002 0008 1 1", ":1: unexpected \"1\" after the value"},
        {"a mouse that nobody touched\n", ": the recording is empty"},
        {"", ": the recording is empty"},
    };
    const TemporaryFolder folder;
    const std::string fine = folder.write("fine.events", good);
    for (const Case& c : cases) {
        const std::string bad = folder.write("bad.events", c.text);
        const ProgramRun run = replay({fine, bad});
        EXPECT_EQ(run.status, 2) << c.text;
        EXPECT_EQ(run.out, "") << c.text;
        EXPECT_THAT(run.err, StartsWith(bad + c.error));
    }
}

TEST(ReplayProgram, says_what_is_wrong_with_a_command) {
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string error;
    };
    const TemporaryFolder folder;
    const std::string fine = folder.write("fine.events", "E: 1.000000 0002 0008 1\n");
    const std::vector<Case> cases{
        {{}, 2, "no recording given\nusage: tessara-replay"},
        {{"--summary"}, 2, "no recording given\nusage: tessara-replay"},
        {{"--speed", fine}, 2, "unknown option --speed\nusage: tessara-replay"},
        {{"-x", fine}, 2, "unknown option -x\nusage: tessara-replay"},
        {{fine, "--plot"}, 2, "--plot needs a value\nusage: tessara-replay"},
        {{folder.path("none")}, 2, folder.path("none") + ": cannot be read: No such file"},
        {{folder.path("")}, 2, folder.path("") + ": cannot be read: Is a directory"},
        {{"--plot", folder.path("no/p.svg"), fine},
         1,
         folder.path("no/p.svg") + ": cannot be written"},
    };
    for (const Case& c : cases) {
        const ProgramRun run = replay(c.arguments);
        EXPECT_EQ(run.status, c.status) << c.error;
        EXPECT_THAT(run.err, StartsWith(c.error));
    }
}

TEST(ReplayProgram, leaves_the_old_picture_when_a_recording_is_bad) {
    const TemporaryFolder folder;
    const std::string picture = folder.write("p.svg", "old");
    EXPECT_EQ(replay({"--plot", picture, folder.write("bad", "E: x")}).status, 2);
    EXPECT_EQ(readWhole(picture), "old");
    EXPECT_EQ(replay({"--plot", picture, sources + "/Recordings/glide.events"}).status, 0);
    EXPECT_THAT(readWhole(picture), StartsWith("<svg"));
    EXPECT_EQ(readWhole(picture + ".partial"), "");
}

TEST(ReplayProgram, shows_a_table_instead_of_the_lines_when_asked_for_a_summary) {
    const std::string demo = sources + "/Recordings/demo.events";
    const ProgramRun run = replay({demo, "--summary", demo});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, StartsWith(demo + "\n"));
    EXPECT_THAT(run.out, HasSubstr("35 wheel, 10 button and 567 motion inputs"));
    EXPECT_THAT(run.out, HasSubstr("nothing at the end, nothing after the reset\n\n" + demo));
    EXPECT_THAT(run.out, Not(HasSubstr("{")));
}

TEST(ReplayProgram, draws_the_picture_of_a_glide_that_the_documents_show) {
    const TemporaryFolder folder;
    const ProgramRun run =
        replay({"--plot", folder.path("glide.svg"), sources + "/Recordings/glide.events"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(readWhole(folder.path("glide.svg")), readWhole(sources + "/docs/glide.svg"))
        << "draw it again: tessara-replay --plot docs/glide.svg Recordings/glide.events";
}

/// A wheel click, a press and release of the sniper button, and a motion, Shift held throughout.
constexpr const char* shortHand =
    "E: 1.000000 0001 0036 1\n"
    "E: 1.010000 0002 0008 1\n"
    "E: 1.020000 0001 0115 1\n"
    "E: 1.030000 0001 0115 0\n"
    "E: 1.040000 0002 0000 3\n";

std::string encoded(const Config& config) {
    return config.encoded().value();
}

TEST(ReplayProgram, leaves_every_input_alone_under_a_disabled_document) {
    Config config = Config::default_();
    config.isEnabled = false;
    const TemporaryFolder folder;
    const ProgramRun run = replay({"--config", folder.write("config.json", encoded(config)),
                                   folder.write("hand.events", shortHand)});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, R"({"t":1010.0,"event":"wheel","axis":"vertical","lines":1,"verdict":"pass"}
{"t":1020.0,"event":"button","number":5,"down":true,"verdict":"pass"}
{"t":1030.0,"event":"button","number":5,"down":false,"verdict":"pass"}
{"t":1040.0,"event":"motion","dx":3,"dy":0,"outDx":3,"outDy":0,"verdict":"pass"}
)");
}

TEST(ReplayProgram, plays_the_profile_of_the_application_in_front) {
    Config config = Config::default_();
    config.profiles[1].scroll.pixelsPerDetent = 7;
    config.profiles[1].buttons.clear();
    const TemporaryFolder folder;
    const std::string document = folder.write("config.json", encoded(config));
    const std::string hand = folder.write("hand.events", shortHand);
    const auto playFor = [&](const std::string& bundleID) {
        return replay({"--config", document, "--frontmost", bundleID, hand}).out;
    };
    const std::string passed = R"("number":5,"down":true,"verdict":"pass")";
    EXPECT_THAT(playFor("com.FIGMA.desktop"), HasSubstr(passed));
    EXPECT_THAT(playFor("com.FIGMA.desktop"), Not(HasSubstr("\"effect\"")));
    EXPECT_THAT(playFor("org.example.editor"), Not(HasSubstr(passed)));
    EXPECT_THAT(playFor("org.example.editor"), HasSubstr(R"("effect":"dpi","value":400)"));
}

TEST(ReplayProgram, shows_what_the_application_receives_with_fields_and_flags) {
    const TemporaryFolder folder;
    const ProgramRun run = replay({"--received", folder.write("hand.events", shortHand)});
    EXPECT_EQ(run.status, 0);
    // The key itself, the first step of the glide with the tag and Shift's flag, the moved mouse.
    EXPECT_THAT(run.out, StartsWith(R"({"t":1000.0,"received":"flagsChanged","flags":131076,)"));
    EXPECT_THAT(run.out, HasSubstr(R"({"t":1018.0,"received":"scrollWheel","flags":131072,)"));
    EXPECT_THAT(run.out, HasSubstr(R"("42":23720122225087041,"88":1,"93":5,"96":5,"99":1)"));
    EXPECT_THAT(run.out, HasSubstr(R"({"t":1040.0,"received":"mouseMoved",)"));
    EXPECT_THAT(run.out, Not(HasSubstr("otherMouse"))) << "the bound button is taken";
    EXPECT_THAT(run.out, Not(HasSubstr("verdict")));
}

TEST(ReplayProgram, plays_nothing_under_a_document_that_cannot_be_used) {
    struct Case {
        std::string text;
        std::string error;
    };
    const TemporaryFolder folder;
    const std::string hand = folder.write("hand.events", shortHand);
    for (const Case& c : std::vector<Case>{{R"({"schemaVersion":2})", "2"},
                                           {R"({"schemaVersion":1})", "isEnabled"},
                                           {"[]", "root of the config must be a JSON object"},
                                           {"", "1"}}) {
        const std::string document = folder.write("config.json", c.text);
        const ProgramRun run = replay({"--config", document, hand});
        EXPECT_EQ(run.status, 2) << c.text;
        EXPECT_EQ(run.out, "") << c.text;
        EXPECT_THAT(run.err, AllOf(HasSubstr(document), HasSubstr(c.error)));
    }
    EXPECT_EQ(replay({"--config", folder.path("none"), hand}).status, 2);
    EXPECT_EQ(replay({"--received", "--summary", hand}).status, 2);
}

}  // namespace
}  // namespace tessara
