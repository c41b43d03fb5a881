#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include "EngineWiring/SimulatedHost.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/LinuxWorkspaceService.h"
#include "Support/ProcessResources.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {
namespace {

const std::string game = "org.example.game";
const std::string editor = "org.example.editor";

/// Stands beside this program, which run-in-session has seen to.
std::string windowProgram() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "session-window";
}

/// An application on its own, ended with its owner.
class WindowProcess {
  public:
    explicit WindowProcess(std::string name) {
        std::string program = windowProgram();
        std::array<char*, 3> arguments{program.data(), name.data(), nullptr};
        EXPECT_EQ(
            ::posix_spawn(&pid_, program.c_str(), nullptr, nullptr, arguments.data(), environ), 0);
    }
    ~WindowProcess() { end(); }

    WindowProcess(const WindowProcess&) = delete;
    WindowProcess& operator=(const WindowProcess&) = delete;

    /// Dies without a word to the display server.
    void end() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(std::exchange(pid_, 0), nullptr, 0);
    }

  private:
    pid_t pid_ = 0;
};

/// Waits for what the display server and the window manager bring about in their own time.
template <typename Condition>
[[nodiscard]] bool comesTrue(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

TEST(LinuxWorkspaceService, one_that_ends_takes_its_connection_and_its_thread_with_it) {
    const WindowProcess editorProcess(editor);
    ThreadedDispatcher dispatcher;
    const auto useOne = [&](bool isEndedAtOnce) {
        const LinuxWorkspaceService service(dispatcher, LinuxWorkspaceService::Displays::current());
        if (isEndedAtOnce) return;
        EXPECT_TRUE(comesTrue([&] { return service.frontmostBundleID() == editor; }));
    };
    useOne(false);  // the first makes what GIO keeps for all
    const std::size_t threads = testing::threadCount();
    const std::size_t descriptors = testing::openFileDescriptorCount();
    for (int round = 0; round < 20; ++round)
        useOne(round % 2 == 0);
    // The last one's thread goes when it has done with what was under way.
    EXPECT_TRUE(comesTrue([&] {
        return testing::threadCount() <= threads &&
               testing::openFileDescriptorCount() <= descriptors;
    }));
}

/// The engine on a simulated desktop, but for the applications: those are the session's.
class SessionTest : public ::testing::Test {
  protected:
    SessionTest() {
        installApplication(game, "Game");
        installApplication(editor, "Editor");
        Profile ofGame = Profile::default_();
        ofGame.id = "game";
        Config document = Config::default_();
        document.profiles.push_back(std::move(ofGame));
        document.ruleSet.rules.push_back(
            {.id = "1", .pattern = ExactBundleID{game}, .profileID = "game"});
        TessaraEngine::Options options;
        options.deviceMatches = {HIDPPDeviceMatch::g502X};
        options.poster = std::make_shared<CGEventPoster>(host.desktop.eventServices(),
                                                         CGEventTapLocation::session);
        engine =
            std::make_shared<TessaraEngine>(std::move(document), std::move(options), platform());
        onMain([this] { static_cast<void>(engine->start()); });
    }
    ~SessionTest() override {
        onMain([this] { engine->stop(); });
    }

    static void installApplication(const std::string& id, const std::string& name) {
        const auto folder = std::filesystem::path(std::getenv("XDG_DATA_HOME")) / "applications";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / (id + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << windowProgram()
            << " " << id << "\n";
    }

    EnginePlatform platform() {
        const EnginePlatform simulated = host.enginePlatform();
        return {.dispatcher = simulated.dispatcher,
                .mainQueue = simulated.mainQueue,
                .eventTaps = simulated.eventTaps,
                .events = simulated.events,
                .cursor = simulated.cursor,
                .hidEvents = simulated.hidEvents,
                .hidRunLoop = simulated.hidRunLoop,
                .permissions = simulated.permissions,
                .workspace = workspace,
                .shortcuts = simulated.shortcuts};
    }

    template <typename Block>
    void onMain(Block block) {
        host.mainQueue->post(std::move(block));
        host.mainQueue->drain();
    }

    EngineStatus status() {
        EngineStatus read;
        onMain([&] {
            engine->refreshMetrics();
            read = engine->status();
        });
        return read;
    }

    void expectInFront(const std::optional<std::string>& id, const std::string& profile) {
        EXPECT_TRUE(comesTrue([&] {
            return workspace.frontmostBundleID() == id && status().activeProfileID == profile;
        })) << "wanted: "
            << id.value_or("none")
            << ", in front: " << workspace.frontmostBundleID().value_or("none")
            << ", profile: " << status().activeProfileID
            << ", limitation: " << workspace.limitation().value_or("none");
    }

    void expectRunning(const std::map<std::string, std::string>& wanted) {
        EXPECT_TRUE(comesTrue([&] {
            std::map<std::string, std::string> running;
            for (const RunningApplication& each : workspace.runningApplications())
                if (each.isRegular) running[each.bundleID.value_or("none")] = each.displayName;
            return running == wanted;
        })) << workspace.runningApplications().size()
            << " run";
    }

    ThreadedDispatcher dispatcher;
    LinuxWorkspaceService workspace{dispatcher, LinuxWorkspaceService::Displays::current()};
    SimulatedHost host{dispatcher};
    std::shared_ptr<TessaraEngine> engine;
};

TEST_F(SessionTest, a_window_that_names_itself_late_is_told_from_then_on) {
    if (!std::getenv("DISPLAY")) GTEST_SKIP() << "Wayland windows have their names ahead of all";
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    xcb_connection_t* const display = connection.get();
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    const xcb_window_t window = xcb_generate_id(display);
    xcb_create_window(display, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    const auto nameItself = [&](std::string_view names) {
        xcb_change_property(display, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(names.size()),
                            names.data());
        xcb_flush(display);
    };
    WindowProcess editorProcess(editor);
    expectInFront(editor, "default");
    xcb_map_window(display, window);
    xcb_flush(display);
    expectInFront(std::nullopt, "default");
    using std::string_view_literals::operator""sv;
    nameItself("game\0Org.Example.Game\0"sv);
    expectInFront(game, "game");
    expectRunning({{game, "Game"}, {editor, "Editor"}});
}

// The last one: it ends the session.
TEST_F(SessionTest, the_profile_follows_the_windows_and_outlives_the_display) {
    expectInFront(std::nullopt, "default");
    WindowProcess gameProcess(game);
    expectInFront(game, "game");
    WindowProcess editorProcess(editor);
    expectInFront(editor, "default");
    expectRunning({{game, "Game"}, {editor, "Editor"}});
    EXPECT_EQ(workspace.limitation(), std::nullopt);

    // What runs comes to the front and is not started again.
    workspace.openApplication(workspace.locationOfApplication(game).value(), /*activates=*/true);
    expectInFront(game, "game");
    gameProcess.end();
    expectInFront(editor, "default");
    expectRunning({{editor, "Editor"}});

    // What does not run is started.
    workspace.openApplication(workspace.locationOfApplication(game).value(), /*activates=*/true);
    expectInFront(game, "game");

    ::kill(std::atoi(std::getenv("SESSION_SERVER")), SIGKILL);
    expectInFront(std::nullopt, "default");
    expectRunning({});
    EXPECT_THAT(status().workspaceLimitation.value_or(""), ::testing::HasSubstr("gone"));
}

}  // namespace
}  // namespace tessara
