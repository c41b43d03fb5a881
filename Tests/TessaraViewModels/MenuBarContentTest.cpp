#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ViewModels/MenuBarContent.h"

namespace tessara {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using Command = MenuBarContent::Command;

class MenuBarContentTest : public testing::VirtualTimeTest {
  protected:
    MenuBarContentTest() {
        host.plugInMouse();
        model.start();
        dispatcher.advance(seconds(5));
        QObject::connect(&menu, &MenuBarContent::changed, [this] { ++changes; });
    }
    ~MenuBarContentTest() override {
        model.stop();
        dispatcher.advance(seconds(5));
    }

    /// A line for each: its text, with its mark; "-" for a separator.
    std::vector<std::string> lines() const {
        std::vector<std::string> lines;
        for (const auto& item : menu.items()) {
            std::string line = item.isSeparator() ? "-" : item.text.toStdString();
            if (item.isChecked) line = (*item.isChecked ? "[x] " : "[ ] ") + line;
            lines.push_back(line);
        }
        return lines;
    }

    SimulatedAppHost host{dispatcher};
    AppModel model{host.appPlatform()};
    std::vector<std::string> asked;
    MenuBarContent menu{
        model,
        {.showOnboarding = [this] { asked.push_back("onboarding"); },
         .showSettings = [this] { asked.push_back("settings"); },
         .terminate = [this] { asked.push_back(model.engine() ? "too early" : "terminate"); }}};
    int changes = 0;
};

TEST_F(MenuBarContentTest, tells_how_the_program_stands_and_offers_what_can_be_done) {
    EXPECT_THAT(lines(), ElementsAre("Active", "-", "[ ] Pause Tessara", "Profile: Default", "-",
                                     "[ ] Start at Login", "Settings…", "Check for Updates…", "-",
                                     "Quit Tessara"));
    EXPECT_EQ(menu.symbol(), "computermouse.fill");
    EXPECT_EQ(menu.label(), "Tessara — Active");

    host.desktop.permissions().revokeAccessibility();
    host.loginItem.isRegistered = true;
    dispatcher.advance(seconds(3));
    EXPECT_THAT(lines(), ElementsAre("Needs permission to run", "Missing: Accessibility", "-",
                                     "[ ] Pause Tessara", "Profile: Default", "-",
                                     "[x] Start at Login", "Finish Setting Up Tessara…",
                                     "Settings…", "Check for Updates…", "-", "Quit Tessara"));
    EXPECT_EQ(menu.label(), "Tessara — Needs permission to run");
}

TEST_F(MenuBarContentTest, pausing_shows_at_once_and_once) {
    changes = 0;
    menu.run(Command::pause);
    EXPECT_TRUE(model.preferences().isPausedByUser());
    EXPECT_EQ(lines()[0], "Paused");
    EXPECT_EQ(lines()[3], "[x] Pause Tessara");
    dispatcher.advance(seconds(10));
    EXPECT_LE(changes, 2) << "the mark and the headline";
    menu.run(Command::pause);
    EXPECT_EQ(lines()[0], "Active");
    dispatcher.advance(seconds(1));
    changes = 0;
    dispatcher.advance(seconds(60));
    EXPECT_EQ(changes, 0) << "a program at rest changes nothing in its menu";
}

TEST_F(MenuBarContentTest, each_line_does_what_it_says) {
    menu.run(Command::startAtLogin);
    EXPECT_TRUE(host.loginItem.isRegistered);
    menu.run(Command::startAtLogin);
    EXPECT_FALSE(host.loginItem.isRegistered);
    menu.run(Command::finishSettingUp);
    menu.run(Command::openSettings);
    menu.run(Command::quit);
    EXPECT_THAT(asked, ElementsAre("onboarding", "settings", "terminate"));
}

}  // namespace
}  // namespace tessara
