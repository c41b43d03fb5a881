#include <QRegularExpression>

#include <gmock/gmock.h>

#include "InterfaceTest.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraApp/Wording/SystemWording.h"

namespace tessara {
namespace {

using SettingsRootViewTest = InterfaceTest;
using Tab = SettingsViewModel::Tab;

TEST_F(SettingsRootViewTest, a_notice_goes_when_its_action_has_put_things_right) {
    host.files.putFile(SimulatedAppHost::configPath, "{");
    open();
    model->setPausedByUser(true);
    const QString problem = "Your Tessara settings file could not be read";
    EXPECT_TRUE(driver->shows(problem, QAccessible::AlertMessage));
    driver->press("Try Reading It Again");
    EXPECT_TRUE(driver->shows(problem, QAccessible::AlertMessage));

    driver->key("Resume", QAccessible::Button, Qt::Key_Return);
    EXPECT_FALSE(driver->shows("Tessara is paused"));
    driver->press("Show In Finder");
    EXPECT_EQ(host.shell.revealedFiles.size(), 1U);
    driver->press("Move It Aside And Start Fresh");
    EXPECT_FALSE(driver->shows(problem));
    EXPECT_EQ(model->store().problem(), std::nullopt);

    host.desktop.permissions().revokeAccessibility();
    settle();
    int requests = 0;
    QObject::connect(settings.get(), &SettingsViewModel::onboardingRequested, [&] { ++requests; });
    driver->press("Finish Setting Up…");
    EXPECT_EQ(requests, 1);
}

TEST_F(SettingsRootViewTest, the_tabs_change_the_page_and_name_the_window) {
    open();
    driver->act("Device", QAccessible::PageTab, QAccessibleActionInterface::pressAction());
    EXPECT_EQ(window->title(), "Device");
    EXPECT_FALSE(driver->shows("Smooth the scroll wheel"));
    EXPECT_FALSE(driver->shows("Editing profile", QAccessible::ComboBox));
    driver->key("Device", QAccessible::PageTab, Qt::Key_Left);
    EXPECT_EQ(window->title(), "Profiles");
    settings->setSelectedTab(static_cast<int>(Tab::scroll));
    EXPECT_TRUE(driver->shows("Smooth the scroll wheel"));
}

TEST_F(SettingsRootViewTest, the_page_shows_the_profile_that_is_picked) {
    open();
    model->editConfig([](Config& config) { config.profiles.back().scroll.pixelsPerDetent = 200; });
    driver->key("Editing profile", QAccessible::ComboBox, Qt::Key_Down);
    EXPECT_EQ(settings->profile().selectedProfileID(), "canvas");
    EXPECT_EQ(driver->value("Distance per wheel click", QAccessible::Slider), 200);
    model->editConfig([](Config& config) { config.profiles.back().name = "Drawing"; });
    EXPECT_TRUE(driver->texts().contains("Drawing")) << "a new name is no other choice";
    model->editConfig([](Config& config) { config.profiles.pop_back(); });
    EXPECT_EQ(driver->value("Distance per wheel click", QAccessible::Slider), 50);
}

TEST_F(SettingsRootViewTest, on_linux_nothing_that_is_shown_names_another_system) {
    const SystemWording wording;
    const QRegularExpression otherSystem(
        "macOS|\\bMac\\b|System Settings|Finder|[⌘⌥⌃⇧]|Input Monitoring|ProMotion");
    host.files.putFile(SimulatedAppHost::configPath, "{");
    open();
    const auto check = [&] {
        for (int tab = 0; tab < settings->tabs().size(); ++tab) {
            settings->setSelectedTab(tab);
            EXPECT_TRUE(driver->texts().filter(otherSystem).isEmpty())
                << driver->texts().filter(otherSystem).join('\n').toStdString();
        }
    };
    check();
    model->setPausedByUser(true);
    check();
    host.desktop.permissions().revokeAccessibility();
    settings->scrollPage()->smoothing->turn(false);
    settle();
    check();
}

}  // namespace
}  // namespace tessara
