#include <gtest/gtest.h>

#include "Platform/Simulated/SimulatedUpdater.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/UpdaterController.h"

namespace tessara {
namespace {

TEST(UpdaterController, starts_once_with_the_users_switch_and_comes_forward_when_it_asks) {
    SimulatedUserDefaults defaults;
    defaults.set("updates.automaticChecks", false);
    AppPreferences preferences(defaults);
    SimulatedUpdater service;
    int activations = 0;
    int changes = 0;
    UpdaterController updater(service, preferences, {"1.4.0", 412}, [&] { ++activations; });
    QObject::connect(&updater, &UpdaterController::changed, [&] { ++changes; });
    EXPECT_FALSE(service.hasStarted || updater.canCheckForUpdates());
    updater.start();
    EXPECT_TRUE(updater.canCheckForUpdates());
    EXPECT_FALSE(service.wasAutomaticAtStart);
    preferences.setAutomaticUpdateChecks(true);
    updater.syncAutomaticChecks();
    EXPECT_TRUE(service.automaticallyChecksForUpdates());
    updater.start();
    EXPECT_FALSE(service.wasAutomaticAtStart) << "it started a second time";

    updater.checkForUpdates();
    EXPECT_EQ(activations, 1) << "the user asked";
    service.offer = {UpdaterState::Available{{"2.0", 500}, 1000}};
    service.checkForUpdates();
    EXPECT_EQ(activations, 2) << "the updater asks";
    EXPECT_EQ(changes, 4);
    EXPECT_EQ(updater.currentVersionDescription(), "1.4.0 (build 412)");
}

}  // namespace
}  // namespace tessara
