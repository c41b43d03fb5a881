#include <gtest/gtest.h>

#include "TessaraApp/MenuBarStatus.h"
#include "TessaraEngine/EngineStatus.h"

namespace tessara {
namespace {

constexpr const char* noMouse = "No Logitech mouse is plugged in";

TEST(MenuBarStatus, the_first_thing_that_stands_in_the_way_is_told) {
    struct Case {
        bool accessibility = true;
        bool inputMonitoring = true;
        bool isPaused = false;
        bool isTapEnabled = true;
        bool isMouseThere = true;
        MenuBarStatus told;
    };
    const std::string warning = "exclamationmark.triangle.fill";
    const std::string needsPermission = "Needs permission to run";
    const Case cases[] = {
        {.told = {"computermouse.fill", "Active", std::nullopt}},
        {.isMouseThere = false, .told = {"computermouse", "Waiting for your mouse", noMouse}},
        {.isTapEnabled = false, .told = {"computermouse.fill", "Not running", std::nullopt}},
        {.isTapEnabled = false,
         .isMouseThere = false,
         .told = {"computermouse", "Not running", noMouse}},
        {.isPaused = true,
         .isTapEnabled = false,
         .isMouseThere = false,
         .told = {"pause.circle", "Paused", "Your mouse behaves exactly as macOS ships it"}},
        {.accessibility = false, .told = {warning, needsPermission, "Missing: Accessibility"}},
        {.inputMonitoring = false, .told = {warning, needsPermission, "Missing: Input Monitoring"}},
        {.accessibility = false,
         .inputMonitoring = false,
         .isPaused = true,
         .told = {warning, needsPermission, "Missing: Input Monitoring and Accessibility"}},
    };
    for (const Case& c : cases) {
        EngineStatus status;
        status.isTapEnabled = c.isTapEnabled;
        status.targetDeviceAttached = c.isMouseThere;
        const PermissionState permissions{.accessibility = c.accessibility,
                                          .inputMonitoring = c.inputMonitoring};
        EXPECT_EQ(MenuBarStatus::of(permissions, c.isPaused, status), c.told)
            << c.told.headline << ", " << c.told.detail.value_or("no detail");
    }
}

}  // namespace
}  // namespace tessara
