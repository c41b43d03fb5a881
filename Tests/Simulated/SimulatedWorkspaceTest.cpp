#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedWorkspace.h"
#include "SimulatedDesktopTest.h"

namespace tessara::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SimulatedWorkspaceTest : public SimulatedDesktopTest {
  protected:
    SimulatedWorkspace& workspace = desktop.workspace();
    SimulatedApplication& browser = workspace.install("org.example.browser", "Browser");
    SimulatedApplication& tool = workspace.install({.bundleID = std::nullopt,
                                                    .displayName = "Tool",
                                                    .location = "/usr/local/bin/tool",
                                                    .isRegular = false});
};

TEST_F(SimulatedWorkspaceTest, each_activation_is_announced_with_what_is_known_of_it) {
    const auto queue = dispatcher.makeQueue("test.main", QualityOfService::standard);
    std::vector<std::string> heard;
    auto subscription = workspace.observeActivations(
        queue, [&](const auto& bundleID) { heard.push_back(bundleID.value_or("(nothing)")); });
    workspace.bringToFront(browser);
    EXPECT_EQ(workspace.frontmostBundleID(), "org.example.browser");
    EXPECT_THAT(heard, IsEmpty()) << "heard before the listener's queue ran";
    workspace.announceWithoutApplication();
    EXPECT_EQ(workspace.frontmost(), &browser);
    workspace.bringToFront(tool);
    EXPECT_EQ(workspace.frontmostBundleID(), std::nullopt);
    workspace.bringToFront("org.example.editor");
    workspace.bringNoneToFront();
    EXPECT_EQ(workspace.frontmost(), nullptr);
    dispatcher.runReady();
    EXPECT_THAT(heard, ElementsAre("org.example.browser", "(nothing)", "(nothing)",
                                   "org.example.editor", "(nothing)"));
    subscription.cancel();
    workspace.bringToFront(browser);
    dispatcher.runReady();
    EXPECT_EQ(heard.size(), 5U);
}

TEST_F(SimulatedWorkspaceTest, opening_an_application_starts_it_and_can_bring_it_to_the_front) {
    const auto location = workspace.locationOfApplication("org.example.browser");
    ASSERT_TRUE(location);
    EXPECT_EQ(workspace.locationOfApplication("org.example.absent"), std::nullopt);

    workspace.openApplication(*location, false);
    EXPECT_TRUE(browser.isRunning());
    EXPECT_EQ(workspace.frontmost(), &editor);
    workspace.openApplication(*location, true);
    EXPECT_EQ(workspace.frontmost(), &browser);
    workspace.openApplication("/nowhere", true);
    EXPECT_EQ(workspace.frontmost(), &browser);
    EXPECT_THAT(workspace.openings(), ElementsAre(SimulatedWorkspace::Opening{*location, false},
                                                  SimulatedWorkspace::Opening{*location, true},
                                                  SimulatedWorkspace::Opening{"/nowhere", true}));

    workspace.quit(browser);
    EXPECT_EQ(workspace.frontmost(), nullptr);
    EXPECT_EQ(workspace.displayName("org.example.browser"), "Browser");
    EXPECT_THAT(workspace.runningApplications(),
                ElementsAre(RunningApplication{"org.example.editor", "Editor", true}));
}

TEST_F(SimulatedWorkspaceTest, two_applications_cannot_share_an_identifier) {
    EXPECT_DEATH(workspace.install("org.example.browser", "Other"), "installed already");
    EXPECT_DEATH((void)workspace.application("org.example.absent"), "org.example.absent");
}

}  // namespace
}  // namespace tessara::testing
