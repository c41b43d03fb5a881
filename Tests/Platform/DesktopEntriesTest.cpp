#include <cstdlib>
#include <regex>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "NamedPipe.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/LinuxShortcutsRunner.h"
#include "Platform/Linux/LinuxWorkspaceService.h"
#include "Support/TemporaryFolder.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// The applications that these tests know. GIO takes note of the folders once, so they are the same
/// for the whole program.
class InstalledApplications final : public ::testing::Environment {
  public:
    void SetUp() override {
        ::setenv("XDG_DATA_HOME", folder_.path("data").c_str(), 1);
        ::setenv("XDG_DATA_DIRS", folder_.path("system").c_str(), 1);
        install("editor", "Exec=/bin/sh %F\nStartupWMClass=Editor\nX-GNOME-FullName=Ed\n");
        install("suite/draw", "Exec=sh\nNoDisplay=true\n");
        install("gone", "Exec=sh\nHidden=true\n");
        install("tool", "Exec=" + program("tool") + " %U\n");
    }

    void install(const std::string& name, const std::string& lines) const {
        folder_.write("data/applications/" + name + ".desktop",
                      "[Desktop Entry]\nType=Application\nName=" + name + "\n" + lines);
    }

    /// The path of a program in a folder of its own.
    [[nodiscard]] std::string program(const std::string& name) const {
        return folder_.path("programs/" + name);
    }

    [[nodiscard]] std::string writeProgram(const std::string& name, const std::string& text) const {
        const std::string path = folder_.write("programs/" + name, "#!/bin/sh\n" + text);
        EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
        return path;
    }

    [[nodiscard]] std::string path(const std::string& name) const { return folder_.path(name); }

  private:
    const TemporaryFolder folder_;
};

// gtest owns it.
const auto* const installed = static_cast<InstalledApplications*>(
    ::testing::AddGlobalTestEnvironment(std::make_unique<InstalledApplications>().release()));

TEST(DesktopEntries, what_is_installed_is_known_by_its_files_name_and_place) {
    const std::string folder = installed->path("data/applications/");
    const DesktopEntry editor{.id = "editor",
                              .displayName = "Ed",
                              .location = folder + "editor.desktop",
                              .startupWMClass = "Editor",
                              .executable = "/bin/sh"};
    std::vector<std::string> ids;
    for (const DesktopEntry& entry : DesktopEntries::all())
        ids.push_back(entry.id + (entry.isShown ? "" : " (not shown)"));
    EXPECT_THAT(ids, ElementsAre("editor", "suite-draw (not shown)"))
        << "one without its program does not count";
    EXPECT_EQ(DesktopEntries::find("editor"), editor);
    EXPECT_EQ(DesktopEntries::find("gone"), std::nullopt);
    EXPECT_EQ(DesktopEntries::findAt(folder + "suite/draw.desktop")->id, "suite-draw");
    EXPECT_EQ(DesktopEntries::findAt("/nowhere/editor.desktop"), std::nullopt);
    EXPECT_FALSE(DesktopEntries::launch("/nowhere/editor.desktop"));
}

TEST(DesktopEntries, programs_start_on_their_own_whoever_starts_them) {
    const TemporaryFolder folder;
    const std::string pipePath = folder.path("pipe");
    const NamedPipe pipe(pipePath);
    // It tells which signals are blocked, before the shell has changed that for its children; its
    // number, its session's and its niceness; and its descriptors.
    const std::string text =
        "{ while read -r each; do case $each in SigBlk*) echo \"$each\" ;; esac; done"
        " </proc/$$/status; cut -d' ' -f1,6,19 /proc/$$/stat;"
        " for each in /proc/$$/fd/*; do readlink $each; done; echo end; } >" +
        pipePath + "\n";
    const std::string tool = installed->writeProgram("tool", text);
    const FileDescriptor ours(::open("/dev/full", O_RDONLY));  // not closed on exec
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("test.launch", QualityOfService::standard);
    LinuxShortcutsRunner shortcuts(installed->path("programs"), queue);
    const std::regex asIfStartedAlone(
        fmt::format("^SigBlk:\t0+\n([0-9]+) \\1 {}\n", ::getpriority(PRIO_PROCESS, 0)));

    for (const bool isShortcut : {false, true}) {
        std::optional<LinuxWorkspaceService> workspace;
        workspace.emplace(dispatcher, LinuxWorkspaceService::Displays{});
        queue->post([&] {
            sigset_t all{};
            ::sigfillset(&all);
            ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
            if (isShortcut) return shortcuts.runShortcut("tool");
            workspace->openApplication(workspace->locationOfApplication("tool").value(), true);
        });
        const std::string told = pipe.readToEnd();
        SCOPED_TRACE(isShortcut ? "a Shortcut" : "an application");
        EXPECT_TRUE(std::regex_search(told, asIfStartedAlone)) << told;
        EXPECT_THAT(told, Not(HasSubstr("/dev/full")));
        EXPECT_THAT(told, HasSubstr("/dev/null\n/dev/null\n"));
        queue->drain();
        workspace.reset();  // drains its own
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left to be waited for";
    }
}

TEST(LinuxShortcutsRunner, a_name_stays_in_its_folder) {
    EXPECT_TRUE(LinuxShortcutsRunner::isName("Turn the lights on"));
    EXPECT_TRUE(LinuxShortcutsRunner::isName("a..b"));
    for (const std::string name : {"", ".", "..", ".hidden", "../tool", "a/b", "/bin/sh"})
        EXPECT_FALSE(LinuxShortcutsRunner::isName(name)) << name;
    EXPECT_FALSE(LinuxShortcutsRunner::isName(std::string("tool\0x", 6)));
}

TEST(LinuxWorkspaceService, a_session_without_a_display_to_ask_says_so) {
    const struct {
        LinuxWorkspaceService::Displays displays;
        const char* reason;
    } cases[] = {{{.wayland = {}, .x11 = {}}, "has no display"},
                 {{.wayland = {}, .x11 = ":9876"}, "\":9876\" does not answer"},
                 {{.wayland = "/nowhere/wayland-9", .x11 = {}}, "\"/nowhere/wayland-9\" does not"}};
    for (const auto& each : cases) {
        ThreadedDispatcher dispatcher;
        LinuxWorkspaceService service(dispatcher, each.displays);
        while (!service.limitation())
            std::this_thread::yield();
        EXPECT_THAT(*service.limitation(), HasSubstr(each.reason));
        EXPECT_THAT(*service.limitation(), HasSubstr("default profile"));
        EXPECT_EQ(service.frontmostBundleID(), std::nullopt);
        EXPECT_EQ(service.displayName("editor"), "Ed");
    }
}

}  // namespace
}  // namespace tessara
