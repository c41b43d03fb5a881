#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Platform/PermissionHelp.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ViewModels/OnboardingHelpModel.h"
#include "TessaraApp/ViewModels/OnboardingViewModel.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;

class OnboardingViewModelTest : public testing::VirtualTimeTest {
  protected:
    OnboardingViewModelTest() {
        host.plugInMouse();
        permissions().revokeAccessibility();
        permissions().revokeInputMonitoring();
        model.start();
        dispatcher.advance(seconds(5));
        QObject::connect(&onboarding, &OnboardingViewModel::contentChanged, [this] { ++changes; });
        QObject::connect(&onboarding, &OnboardingViewModel::finished, [this] { ++finishes; });
    }
    ~OnboardingViewModelTest() override {
        onboarding.setWatching(false);
        model.stop();
        dispatcher.advance(seconds(5));
    }

    SimulatedPermissions& permissions() { return host.desktop.permissions(); }
    void goTo(OnboardingViewModel::Step step) {
        while (onboarding.step() < step)
            onboarding.advance();
    }

    SimulatedAppHost host{dispatcher};
    AppModel model{host.appPlatform()};
    std::vector<std::string> links;
    OnboardingViewModel onboarding{model, host.mainQueue, nullptr, [this](const QString& url) {
                                       links.push_back(url.toStdString());
                                   }};
    int changes = 0;
    int finishes = 0;
};

TEST_F(OnboardingViewModelTest, can_be_walked_through_without_granting_anything) {
    std::vector<std::string> seen;
    for (int step = 0; step < 4; ++step) {
        seen.push_back(onboarding.progressText().toStdString() + ": " +
                       onboarding.title().toStdString() + ", " +
                       onboarding.primaryText().toStdString());
        if (step < 3) onboarding.advance();
    }
    EXPECT_THAT(seen, ElementsAre("Step 1 of 4: Welcome to Tessara, Continue",
                                  "Step 2 of 4: Let Tessara see your mouse, Continue",
                                  "Step 3 of 4: Let Tessara press keys for you, Continue",
                                  "Step 4 of 4: You're set, Start Using Tessara"));
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(onboarding.stateText(), "One permission is still missing.");
    EXPECT_FALSE(onboarding.closingText().isEmpty());
    EXPECT_FALSE(model.preferences().hasCompletedOnboarding());
    onboarding.advance();
    EXPECT_EQ(finishes, 1);
    EXPECT_TRUE(model.preferences().hasCompletedOnboarding());
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::done) << "a window that comes back is here";
    for (int step = 0; step < 9; ++step)
        onboarding.goBack();
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::welcome);
    EXPECT_FALSE(onboarding.canGoBack());
}

TEST_F(OnboardingViewModelTest, moves_on_by_itself_when_a_switch_is_flipped) {
    onboarding.setWatching(true);
    dispatcher.advance(seconds(3));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::welcome);
    onboarding.advance();
    EXPECT_TRUE(onboarding.asksForGrant());
    EXPECT_EQ(onboarding.stateText(), "Input Monitoring is not on yet");
    permissions().grantInputMonitoring();
    dispatcher.advance(milliseconds(600));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::accessibility);
    EXPECT_FALSE(model.status().isTapEnabled);
    permissions().grantAccessibility();
    dispatcher.advance(milliseconds(600));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::done);
    EXPECT_TRUE(model.status().isTapEnabled) << "without waiting for the application's own poll";
    EXPECT_EQ(onboarding.stateText(), "Both permissions are on.");
    EXPECT_TRUE(onboarding.closingText().isEmpty());

    onboarding.goBack();
    EXPECT_EQ(onboarding.stateText(), "Accessibility is on");
    EXPECT_FALSE(onboarding.asksForGrant());
    onboarding.goBack();
    dispatcher.advance(milliseconds(600));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::done) << "both are there";
}

TEST_F(OnboardingViewModelTest, watches_only_while_the_window_is_there) {
    goTo(OnboardingViewModel::inputMonitoring);
    permissions().grantInputMonitoring();
    dispatcher.advance(seconds(30));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::inputMonitoring);
    onboarding.setWatching(true);
    onboarding.setWatching(true);
    dispatcher.advance(milliseconds(1));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::accessibility);
    onboarding.setWatching(false);
    permissions().grantAccessibility();
    dispatcher.advance(seconds(30));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::accessibility);
}

TEST_F(OnboardingViewModelTest, a_mouse_that_is_refused_shows_as_not_on_while_the_watch_moves_on) {
    host.hidTransport.setListenEventAccess(HIDListenEventAccess::denied);
    permissions().grantInputMonitoring();
    model.refreshPermissions();
    goTo(OnboardingViewModel::inputMonitoring);
    EXPECT_EQ(onboarding.stateText(), "Input Monitoring is not on yet");
    EXPECT_TRUE(onboarding.extraText().startsWith("macOS is currently refusing"));
    onboarding.setWatching(true);
    dispatcher.advance(milliseconds(1));
    EXPECT_EQ(onboarding.step(), OnboardingViewModel::accessibility);
}

TEST_F(OnboardingViewModelTest, opens_the_page_of_the_permission_in_question) {
    onboarding.openSettings();
    goTo(OnboardingViewModel::inputMonitoring);
    onboarding.openSettings();
    goTo(OnboardingViewModel::accessibility);
    onboarding.openSettings();
    goTo(OnboardingViewModel::done);
    onboarding.openSettings();
    EXPECT_THAT(
        links,
        ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_ListenEvent",
                    "x-apple.systempreferences:com.apple.preference.security?"
                    "Privacy_Accessibility"));
}

TEST_F(OnboardingViewModelTest, the_switch_for_the_login_shows_what_the_system_says) {
    goTo(OnboardingViewModel::done);
    changes = 0;
    onboarding.setStartsAtLogin(true);
    EXPECT_TRUE(onboarding.startsAtLogin());
    EXPECT_EQ(changes, 1);
    host.loginItem.refusal = "the disk is full";
    onboarding.setStartsAtLogin(false);
    EXPECT_TRUE(onboarding.startsAtLogin());
    EXPECT_EQ(onboarding.loginErrorText(), "macOS refused: the disk is full");
}

class ScriptedHelp final : public PermissionHelp {
  public:
    std::vector<PermissionFinding> findings() const override { return found; }
    std::string command() const override { return "grant-all"; }
    void grant() override { ++grants; }

    std::vector<PermissionFinding> found{{"The door is locked.", false},
                                         {"The light is on.", true}};
    int grants = 0;
};

TEST_F(OnboardingViewModelTest, where_there_are_no_pages_the_button_shows_what_is_missing) {
    ScriptedHelp help;
    OnboardingViewModel helped(model, host.mainQueue, &help,
                               [this](const QString&) { links.emplace_back("opened"); });
    int findingChanges = 0;
    QObject::connect(helped.help(), &OnboardingHelpModel::findingsChanged,
                     [&] { ++findingChanges; });
    helped.advance();
    EXPECT_FALSE(helped.showsHelp());
    helped.openSettings();
    EXPECT_TRUE(helped.showsHelp());
    EXPECT_TRUE(links.empty());
    ASSERT_EQ(helped.help()->findings().size(), 2);
    EXPECT_EQ(helped.help()->findings().at(0).value<OnboardingFinding>().text,
              "The door is locked.");
    helped.help()->grant();
    EXPECT_EQ(help.grants, 1);
    help.found[0] = {"The door is open.", true};
    findingChanges = 0;
    helped.setWatching(true);
    dispatcher.advance(seconds(3));
    EXPECT_EQ(findingChanges, 1) << "seen by the watch, and told once";
    EXPECT_TRUE(helped.help()->findings().at(0).value<OnboardingFinding>().isGranted);
}

}  // namespace
}  // namespace tessara
