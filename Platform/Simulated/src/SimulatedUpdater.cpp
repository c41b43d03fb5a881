#include "Platform/Simulated/SimulatedUpdater.h"

#include <utility>

namespace tessara {

void SimulatedUpdater::start() {
    hasStarted = true;
    wasAutomaticAtStart = isAutomatic_;
    if (!feed) become({UpdaterState::NotConfigured{}});
}

bool SimulatedUpdater::canCheckForUpdates() const {
    return hasStarted && feed && !state_.is<UpdaterState::Checking>() &&
           !state_.is<UpdaterState::Downloading>();
}

void SimulatedUpdater::checkForUpdates() {
    if (!canCheckForUpdates()) return;
    become({UpdaterState::Checking{}});
    if (offer.is<UpdaterState::Available>() && delegate_) delegate_->updaterWillAskUser();
    become(offer);
}

void SimulatedUpdater::downloadUpdate() {
    if (const auto* available = std::get_if<UpdaterState::Available>(&state_.value)) {
        become({UpdaterState::Verified{available->release}});
    }
}

void SimulatedUpdater::installUpdate() {
    if (const auto* verified = std::get_if<UpdaterState::Verified>(&state_.value)) {
        become({UpdaterState::HandedOver{verified->release}});
    }
}

void SimulatedUpdater::dismissUpdate() {
    if (feed && !state_.is<UpdaterState::Checking>()) become({UpdaterState::Idle{}});
}

void SimulatedUpdater::become(UpdaterState state) {
    state_ = std::move(state);
    if (delegate_) delegate_->updaterDidChange();
}

}  // namespace tessara
