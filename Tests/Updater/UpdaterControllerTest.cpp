#include <gtest/gtest.h>

#include "Platform/Simulated/SimulatedUpdater.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/UpdaterController.h"

namespace tessara {
namespace {

TEST(UpdaterController, starts_once_and_with_the_switch_as_the_preferences_have_it) {
    SimulatedUserDefaults defaults;
    defaults.set("updates.automaticChecks", false);
    AppPreferences preferences(defaults);
    SimulatedUpdater service;
    UpdaterController updater(service, preferences, {"1.4.0", 412}, {});
    EXPECT_FALSE(service.hasStarted);
    EXPECT_FALSE(updater.canCheckForUpdates());

    updater.start();
    EXPECT_TRUE(service.hasStarted);
    EXPECT_FALSE(service.wasAutomaticAtStart);
    EXPECT_TRUE(updater.canCheckForUpdates());
    service.hasStarted = false;
    updater.start();
    EXPECT_FALSE(service.hasStarted);

    preferences.setAutomaticUpdateChecks(true);
    updater.syncAutomaticChecks();
    EXPECT_TRUE(service.automaticallyChecksForUpdates());
    EXPECT_EQ(updater.currentVersionDescription(), "1.4.0 (build 412)");
}

TEST(UpdaterController, brings_the_application_forward_whenever_the_user_is_asked) {
    SimulatedUserDefaults defaults;
    const AppPreferences preferences(defaults);
    SimulatedUpdater service;
    int activations = 0;
    int changes = 0;
    UpdaterController updater(service, preferences, {}, [&] { ++activations; });
    QObject::connect(&updater, &UpdaterController::changed, [&] { ++changes; });
    updater.start();

    updater.checkForUpdates();
    EXPECT_EQ(activations, 1) << "the user asked";
    service.offer = {UpdaterState::Available{{"2.0", 500}, 1000}};
    service.checkForUpdates();
    EXPECT_EQ(activations, 2) << "the updater asks";
    EXPECT_EQ(changes, 4);
    EXPECT_EQ(updater.state(), service.offer);
}

}  // namespace
}  // namespace tessara
