#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Linux/AutostartLoginItem.h"
#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Platform/Simulated/SimulatedLoginItem.h"
#include "TessaraApp/LaunchAtLogin.h"

namespace tessara {
namespace {

using Status = LoginItemStatus;
using Step = SimulatedFileSystem::Step;

TEST(LaunchAtLogin, shows_what_the_system_says_and_not_what_was_asked) {
    SimulatedLoginItem system;
    LaunchAtLogin login(system);
    int changes = 0;
    QObject::connect(&login, &LaunchAtLogin::statusChanged, [&] { ++changes; });
    QObject::connect(&login, &LaunchAtLogin::lastErrorChanged, [&] { ++changes; });
    EXPECT_EQ(login.statusText(), "Tessara could not determine whether it starts at login.");

    login.setEnabled(true);
    login.refresh();
    EXPECT_TRUE(login.isEnabled());
    EXPECT_EQ(changes, 1);

    system.isApproved = false;
    login.setEnabled(true);
    EXPECT_EQ(login.status(), Status::requiresApproval);
    EXPECT_FALSE(login.isEnabled() || login.lastError());

    system.isInstalled = false;
    system.refusal = "Operation not permitted";
    login.setEnabled(true);
    EXPECT_EQ(login.status(), Status::notFound);
    login.refresh();
    EXPECT_EQ(login.lastError(), "Operation not permitted") << "it stands until the next request";
    system = {};
    login.setEnabled(false);
    EXPECT_EQ(login.status(), Status::notRegistered);
    EXPECT_FALSE(login.lastError());
    EXPECT_EQ(changes, 6);
}

struct AutostartLoginItemTest : ::testing::Test {
    void install(const std::string& text) { files.putFile(installed, text); }

    const std::string entry = "/home/user/.config/autostart/tessara.desktop";
    const std::string installed = "/usr/share/applications/tessara.desktop";
    const std::string installedText =
        "[Desktop Entry]\nType=Application\nName=Tessara\nName[de]=Tessara!\n"
        "Exec=tessara --as \"a b\"";
    SimulatedFileSystem files;
    AutostartLoginItem item{files,
                            {.entry = entry,
                             .installedEntries = {"/home/user/.local/share/applications/"
                                                  "tessara.desktop",
                                                  installed},
                             .programFolders = {"/usr/local/bin", "/usr/bin"}}};
};

TEST_F(AutostartLoginItemTest, registers_a_copy_of_the_installed_entry_and_takes_it_away_again) {
    EXPECT_EQ(item.status(), Status::notFound);
    install(installedText);
    EXPECT_EQ(item.status(), Status::notFound) << "the program itself is missing";
    EXPECT_TRUE(item.registerItem().error().starts_with("Tessara is not installed"));
    files.putFile("/usr/bin/tessara", "");
    EXPECT_EQ(item.status(), Status::notRegistered);

    ASSERT_TRUE(item.registerItem());
    EXPECT_EQ(item.status(), Status::enabled);
    EXPECT_EQ(files.contents(entry),
              installedText + " --at-login\nX-GNOME-Autostart-enabled=true\n");
    ASSERT_TRUE(item.registerItem());
    EXPECT_EQ(item.status(), Status::enabled);

    ASSERT_TRUE(item.unregisterItem());
    EXPECT_EQ(item.status(), Status::notRegistered);
    EXPECT_FALSE(files.contents(entry));
    EXPECT_TRUE(item.unregisterItem()) << "none is left";
}

TEST_F(AutostartLoginItemTest, an_entry_that_the_desktop_switched_off_waits_for_the_user) {
    install("[Desktop Entry]\nTryExec=/opt/tessara/tessara\nExec=tessara\n");
    files.putFile("/opt/tessara/tessara", "");
    const std::vector<std::pair<std::string, Status>> entries{
        {"[Desktop Entry]\nExec=tessara\n", Status::enabled},
        {"[Desktop Entry]\nExec=tessara\nHidden=true\n", Status::requiresApproval},
        {"[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n", Status::requiresApproval},
        {"[Desktop Entry]\nHidden=false\nX-GNOME-Autostart-enabled=true\n", Status::enabled},
        {"[Other]\nHidden=true\n", Status::enabled},
        {"no desktop entry at all", Status::notRegistered},
    };
    for (const auto& [text, status] : entries) {
        SCOPED_TRACE(text);
        files.putFile(entry, text);
        EXPECT_EQ(item.status(), status);
        ASSERT_TRUE(item.registerItem());
        EXPECT_EQ(files.contents(entry) == text, status == Status::requiresApproval);
    }
}

TEST_F(AutostartLoginItemTest, what_cannot_be_read_or_written_is_told_in_words) {
    install(installedText);
    files.putFile("/usr/bin/tessara", "");
    files.failEvery(Step::read, FileError::Kind::notPermitted);
    EXPECT_EQ(item.status(), Status::unknown);
    EXPECT_EQ(item.registerItem().error(), "“" + installed + "”: Permission denied.");
    files.failEvery(Step::read, std::nullopt);
    files.failEvery(Step::writeTemporary, FileError::Kind::noSpace);
    EXPECT_EQ(item.registerItem().error(), "“" + entry + "”: No space left on device.");
    EXPECT_EQ(item.status(), Status::notRegistered);
}

}  // namespace
}  // namespace tessara
