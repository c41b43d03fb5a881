// The whole program on a real kernel: started as a user would, with nothing but its nodes and
// files.

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <linux/input.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Kernel/EventNode.h"
#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "TessaraCore/Config.h"

namespace tessara::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr unsigned holdButton = 3;
constexpr std::int16_t fastStep = 500;
constexpr std::int16_t fastStepAsMoved = 3000;  // at the highest gain, however late the next one is

class Headless : public ::testing::Test {
  protected:
    Headless() {
        ::setenv("HOME", home_.c_str(), 1);
        Config document = Config::default_();
        document.profiles.front().buttons.push_back(
            {.button = holdButton, .action = HoldAction{.code = 0}});
        fs::remove_all(home_);
        fs::create_directories(home_ / ".local/share/tessara");
        std::ofstream(home_ / ".local/share/tessara/config.json") << document.encoded().value();
        mouse.plug();
    }

    ~Headless() override {
        if (process_ == 0) return;
        send(SIGKILL);
        awaitEnd();
    }

    /// Starts the program, which lies beside this one, and waits until it shapes the motion.
    void start() {
        std::string program = fs::read_symlink("/proc/self/exe").parent_path() / "tessara-headless";
        char* const arguments[] = {program.data(), nullptr};
        ASSERT_EQ(::posix_spawn(&process_, program.c_str(), nullptr, nullptr, arguments, environ),
                  0);
        virtualMouse = open("Tessara Virtual Mouse");
        virtualKeyboard = open("Tessara Virtual Keyboard");
        ASSERT_TRUE(waitFor([this] {
            mouse.pointer().move(fastStep, 0);
            const auto frame = virtualMouse->next(1ms);
            return frame && frame->sumOf(EV_REL, REL_X) == fastStepAsMoved;
        }));
        static_cast<void>(virtualMouse->framesUntilQuiet());
    }

    void send(int signal) const { ::kill(process_, signal); }

    /// Waits for the program's end; the status that wait(2) has for it.
    int awaitEnd() {
        int status = 0;
        ::waitpid(std::exchange(process_, 0), &status, 0);
        return status;
    }

    static std::unique_ptr<EventNode> open(const std::string& name) {
        const auto path = EventNode::pathNamed(name);
        return path ? std::make_unique<EventNode>(*path)
                    : throw std::runtime_error(name + " does not come");
    }

    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse{dispatcher, firmware};
    std::unique_ptr<EventNode> virtualMouse;
    std::unique_ptr<EventNode> virtualKeyboard;

  private:
    const fs::path home_ = fs::temp_directory_path() / "tessara-headless";
    pid_t process_ = 0;
};

TEST_F(Headless, the_mouse_behaves_as_the_document_says) {
    start();
    EXPECT_TRUE(waitFor([this] { return firmware.dpi() == Profile::defaultDPI; }));

    mouse.pointer().spin(-1);
    std::int64_t units = 0;
    std::int64_t lines = 0;
    for (const NodeFrame& frame : virtualMouse->framesUntilQuiet()) {
        units += frame.sumOf(EV_REL, REL_WHEEL_HI_RES);
        lines += frame.sumOf(EV_REL, REL_WHEEL);
    }
    EXPECT_EQ(units, -120);
    EXPECT_EQ(lines, -1);

    for (int step = 0; step < 10; ++step) {
        std::this_thread::sleep_for(20ms);  // below the curve's threshold
        mouse.pointer().move(1, -2);
        const auto frame = virtualMouse->next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->sumOf(EV_REL, REL_X), 1);
        EXPECT_EQ(frame->sumOf(EV_REL, REL_Y), -2);
    }
}

TEST_F(Headless, whatever_ends_it_the_mouse_works_as_before_and_the_next_start_takes_it_again) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGKILL}) {
        SCOPED_TRACE(signal);
        start();
        mouse.pointer().press(holdButton);
        static_cast<void>(virtualKeyboard->framesUntil({EV_KEY, KEY_A, 1}));
        mouse.pointer().press(0);
        static_cast<void>(virtualMouse->framesUntil({EV_KEY, BTN_LEFT, 1}));

        send(signal);
        if (signal == SIGKILL) {
            EXPECT_EQ(WTERMSIG(awaitEnd()), signal);
        } else {
            static_cast<void>(virtualKeyboard->framesUntil({EV_KEY, KEY_A, 0}));
            static_cast<void>(virtualMouse->framesUntil({EV_KEY, BTN_LEFT, 0}));
            EXPECT_EQ(awaitEnd(), 0);
        }
        EXPECT_TRUE(waitFor([] {
            return !EventNode::exists("Tessara Virtual Mouse") &&
                   !EventNode::exists("Tessara Virtual Keyboard");
        }));

        EventNode node(mouse.pointer().eventNode());
        mouse.pointer().release(holdButton);
        mouse.pointer().release(0);
        mouse.pointer().move(7, 0);
        static_cast<void>(node.framesUntil({EV_REL, REL_X, 7}));
        EXPECT_TRUE(node.heldKeys().empty());
    }
    start();
}

}  // namespace
}  // namespace tessara::testing
