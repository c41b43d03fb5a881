#include <filesystem>
#include <set>

#include <gmock/gmock.h>

#include "Platform/Linux/LinuxEventTapService.h"
#include "Platform/Linux/LinuxPermissionHelp.h"
#include "Platform/Linux/LinuxPermissionService.h"
#include "Support/TemporaryFolder.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using UinputAccess = LinuxPermissionReport::UinputAccess;

/// A tree like the system's in a folder of the test's, in which what is refused is said.
class LinuxPermissionServiceTest : public ::testing::Test {
  protected:
    void makeFile(const std::string& path) const { folder.write("root" + path, ""); }

    /// A node of a device with this name in the kernel's tree of HID devices.
    void plugIn(const std::string& deviceClass, const std::string& node,
                const std::string& hid) const {
        makeFile((deviceClass == "input" ? "/dev/input/" : "/dev/") + node);
        const auto link = std::filesystem::path(root + "/sys/class/" + deviceClass) / node;
        std::filesystem::create_directories(link.parent_path());
        std::filesystem::create_symlink("../../devices/usb1/1-2/" + hid + "/input/input7/" + node,
                                        link);
    }

    const TemporaryFolder folder;
    const std::string root = folder.path("root");
    std::set<std::string> refused;
    const LinuxPermissionService service{
        {{.vendor = 0x046D, .product = 0xC099}},
        {.root = root, .hasAccess = [this](const std::string& path, int) {
             return !refused.contains(path.substr(root.size()));
         }}};
};

TEST_F(LinuxPermissionServiceTest, to_post_is_to_write_to_uinput) {
    EXPECT_EQ(service.report().uinput, UinputAccess::missing);
    EXPECT_FALSE(service.isProcessTrusted());
    EXPECT_THAT(service.report().problems(),
                ElementsAre(HasSubstr("not loaded"), HasSubstr("not plugged in")));
    makeFile("/dev/uinput");
    EXPECT_TRUE(service.isProcessTrusted());
    refused = {"/dev/uinput"};
    EXPECT_FALSE(service.isProcessTrusted());
    EXPECT_EQ(service.report().uinput, UinputAccess::refused);
}

TEST_F(LinuxPermissionServiceTest, to_listen_is_to_read_each_node_of_the_mouse_and_of_no_other) {
    makeFile("/dev/uinput");
    plugIn("input", "event3", "0003:046D:C099.0001");
    plugIn("input", "event4", "0003:046D:C099.0002");
    plugIn("input", "event5", "0003:1234:C099.0003");
    plugIn("hidraw", "hidraw0", "0003:046D:C099.0002");
    plugIn("hidraw", "hidraw1", "0003:1234:C099.0003");
    refused = {"/dev/input/event5", "/dev/hidraw1"};
    EXPECT_TRUE(service.preflightListenEventAccess());
    EXPECT_TRUE(service.report().canSpeak());
    EXPECT_THAT(service.report().problems(), IsEmpty());

    refused = {"/dev/input/event4", "/dev/hidraw0"};
    EXPECT_FALSE(service.preflightListenEventAccess());
    EXPECT_FALSE(service.report().canSpeak());
    EXPECT_THAT(service.report().problems(),
                ElementsAre(HasSubstr("/dev/input/event4 "), HasSubstr("/dev/hidraw0 ")));
}

TEST_F(LinuxPermissionServiceTest, without_the_mouse_what_counts_is_whether_it_could_be_read) {
    EXPECT_FALSE(service.preflightListenEventAccess());
    plugIn("input", "event5", "0003:1234:C099.0003");
    EXPECT_TRUE(service.preflightListenEventAccess()) << "by a group, say";
    refused = {"/dev/input/event5"};
    EXPECT_FALSE(service.preflightListenEventAccess());
    EXPECT_FALSE(service.report().canSpeak());
    makeFile("/etc/udev/rules.d/70-tessara.rules");
    EXPECT_TRUE(service.preflightListenEventAccess());
    EXPECT_TRUE(service.report().canSpeak());
}

TEST_F(LinuxPermissionServiceTest, a_keyboard_that_may_not_be_read_is_told_of_and_no_obstacle) {
    makeFile("/dev/uinput");
    makeFile("/etc/udev/rules.d/70-tessara.rules");
    const auto plugInKeyboard = [this](const std::string& node, const std::string& hid) {
        plugIn("input", node, hid);
        folder.write("root/sys/devices/usb1/1-2/" + hid + "/input/input7/" + node +
                         "/device/capabilities/key",
                     "1000000000000 20000000\n");  // with the left Control key
    };
    plugInKeyboard("event4", "0003:046D:C099.0002");  // the mouse's own
    plugInKeyboard("event5", "0003:1234:0001.0003");
    plugInKeyboard("event6", "virtual");
    plugIn("input", "event7", "0003:1234:0001.0003");
    refused = {"/dev/input/event6", "/dev/input/event7"};
    EXPECT_THAT(service.report().limitations(), IsEmpty());
    refused.insert("/dev/input/event5");
    EXPECT_THAT(service.report().limitations(), ElementsAre(HasSubstr("keyboard")));
    EXPECT_THAT(service.report().problems(), IsEmpty());
    const PermissionFinding seen = LinuxPermissionHelp(service, "").findings()[1];
    EXPECT_TRUE(seen.isGranted);
    EXPECT_THAT(seen.description, HasSubstr("buttons and movement. The keyboard may not be read"));
}

}  // namespace
}  // namespace tessara
