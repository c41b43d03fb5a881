// The program without an interface, as a process: its folders, its signals and how it ends. There
// is no mouse to be had here, and no right to one.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Paths.h"
#include "ProgramRun.h"
#include "Support/TemporaryFolder.h"
#include "TessaraCore/Config.h"

namespace tessara {
namespace {

using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class HeadlessProgramTest : public ::testing::Test {
  protected:
    /// Starts the program, runs `script` of the shell once it has said that it started, and waits
    /// for its end. In the script $program is the program and $pid the process.
    ProgramRun play(const std::string& script) {
        const std::string session =
            "export HOME=" + folder.path("home") + " XDG_RUNTIME_DIR=" + folder.path("runtime") +
            " program='" TESSARA_HEADLESS_PROGRAM "'\n" +
            "unset XDG_DATA_HOME XDG_CONFIG_HOME XDG_STATE_HOME DISPLAY WAYLAND_DISPLAY\n"
            "mkdir -p $HOME $XDG_RUNTIME_DIR; rm -f $HOME/said\n"
            "\"$program\" 2>>$HOME/said & pid=$!\n"
            "until grep -q started $HOME/said; do kill -0 $pid || exit 99; sleep 0.02; done\n" +
            script + "\nwait $pid; status=$?; cat $HOME/said >&2; exit $status";
        return runProgram("/bin/sh", {"-c", session});
    }
    std::string document() { return readWhole(folder.path(documentPath)); }

    static constexpr const char* documentPath = "home/.local/share/tessara/config.json";
    TemporaryFolder folder;
};

TEST_F(HeadlessProgramTest, either_signal_ends_it_in_good_order_with_the_document_saved) {
    for (const std::string signal : {"TERM", "INT"}) {
        const ProgramRun run = play("kill -" + signal + " $pid");
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.err, EndsWith("tessara-headless: ended\n"));
        EXPECT_EQ(document(), Config::default_().encoded().value());
    }
}

TEST_F(HeadlessProgramTest, further_signals_end_it_too_and_leave_the_document_whole) {
    const ProgramRun run = play("kill -TERM $pid; kill -TERM $pid; kill -INT $pid");
    EXPECT_NE(run.status, 99);
    EXPECT_THAT(document(), AnyOf(IsEmpty(), Config::default_().encoded().value()));
}

TEST_F(HeadlessProgramTest, a_second_copy_leaves_the_first_one_alone) {
    const ProgramRun run = play("\"$program\" 2>>$HOME/said; echo second: $?; kill -TERM $pid");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "second: 1\n");
    EXPECT_THAT(run.err, HasSubstr("another copy of Tessara is running"));
}

TEST_F(HeadlessProgramTest, a_document_that_it_cannot_use_is_told_and_left_as_it_was) {
    const std::string newer = R"({"schemaVersion": 7})";
    folder.write(documentPath, newer);
    const ProgramRun run =
        play("until grep -q 'newer version' $HOME/said; do sleep 0.02; done; kill -TERM $pid");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.err, HasSubstr(folder.path(documentPath)));
    EXPECT_EQ(document(), newer);
}

TEST_F(HeadlessProgramTest, arguments_are_refused_before_anything_is_touched) {
    const ProgramRun run = runProgram(TESSARA_HEADLESS_PROGRAM, {"--help"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("\"--help\""));
    EXPECT_THAT(run.err, Not(HasSubstr("started")));
}

}  // namespace
}  // namespace tessara
