#include "TessaraApp/UpdaterController.h"

#include <utility>

#include <fmt/core.h>

#include "TessaraApp/AppPreferences.h"

namespace tessara {

UpdaterController::UpdaterController(UpdaterService& service, const AppPreferences& preferences,
                                     ProgramVersion current,
                                     ActivateApplication activateApplication)
    : service_(service),
      preferences_(preferences),
      current_(std::move(current)),
      activateApplication_(std::move(activateApplication)) {
    service_.setDelegate(this);
}

UpdaterController::~UpdaterController() {
    service_.setDelegate(nullptr);
}

void UpdaterController::start() {
    if (std::exchange(hasStarted_, true)) return;
    // A switch that is off must be off before the service first looks at the time.
    syncAutomaticChecks();
    service_.start();
}

void UpdaterController::syncAutomaticChecks() {
    const bool checks = preferences_.automaticUpdateChecks();
    if (service_.automaticallyChecksForUpdates() != checks) {
        service_.setAutomaticallyChecksForUpdates(checks);
    }
}

void UpdaterController::checkForUpdates() {
    updaterWillAskUser();
    service_.checkForUpdates();
}

std::string UpdaterController::currentVersionDescription() const {
    return fmt::format("{} (build {})", current_.version, current_.build);
}

void UpdaterController::updaterDidChange() {
    Q_EMIT changed();
}

void UpdaterController::updaterWillAskUser() {
    if (activateApplication_) activateApplication_();
}

}  // namespace tessara
