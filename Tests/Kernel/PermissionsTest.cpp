#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/LinuxEventTapService.h"
#include "Platform/Linux/LinuxPermissionService.h"
#include "Platform/Linux/Udev.h"
#include "Platform/Simulated/SimulatedMouse.h"

namespace tessara::testing {
namespace {

/// The nodes that udev hands to who sits at the computer.
std::vector<std::string> handedOut(const char* subsystem) {
    std::vector<std::string> nodes;
    for (const UdevDevice& device : Udev().devices(subsystem)) {
        const std::string tags = device.property("CURRENT_TAGS").value_or("");
        if (tags.find(":uaccess:") != std::string::npos) nodes.push_back(device.node());
    }
    return nodes;
}

TEST(Permissions, the_rule_hands_out_the_nodes_of_the_mouse_and_of_nothing_else) {
    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse(dispatcher, firmware);
    const UHIDPointer foreignMouse(dispatcher, UHIDPointer::foreignMouse());
    const UHIDKeyboard foreignKeyboard(dispatcher, UHIDKeyboard::foreignKeyboard());
    const LinuxPermissionService service(
        {{.vendor = UHIDMouse::vendorID, .product = UHIDMouse::productID}});
    EXPECT_TRUE(service.preflightListenEventAccess()) << "the rule stands";
    mouse.plug();

    const LinuxPermissionReport report = service.report();
    std::vector<std::string> inputNodes;
    std::vector<std::string> hidNodes;
    for (const auto& node : report.inputNodes)
        inputNodes.push_back(node.path);
    for (const auto& node : report.hidNodes)
        hidNodes.push_back(node.path);
    EXPECT_THAT(inputNodes, ::testing::UnorderedElementsAre(mouse.pointer().eventNode(),
                                                            mouse.keyboard().eventNode()));
    EXPECT_THAT(hidNodes, ::testing::Contains(mouse.vendorNode()));
    EXPECT_EQ(report.problems(), std::vector<std::string>{});

    EXPECT_THAT(handedOut("input"), ::testing::UnorderedElementsAreArray(inputNodes));
    EXPECT_THAT(handedOut("hidraw"), ::testing::UnorderedElementsAreArray(hidNodes));
    EXPECT_THAT(handedOut("misc"), ::testing::ElementsAre("/dev/uinput"));
    for (const std::string& node : inputNodes) {
        struct stat status{};
        ASSERT_EQ(::stat(node.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & (S_IROTH | S_IWOTH), 0U) << node << " is open to all";
    }
}

}  // namespace
}  // namespace tessara::testing
