#include "TessaraEngine/ProfileWatcher.h"

#include <utility>

#include "Platform/WorkspaceService.h"

namespace tessara {

ProfileWatcher::ProfileWatcher(Config config, WorkspaceService& workspace,
                               std::shared_ptr<DispatchQueue> mainQueue, Handler handler)
    : handler_(std::move(handler)),
      workspace_(workspace),
      mainQueue_(std::move(mainQueue)),
      config_(std::move(config)),
      currentProfile_(config_.activeProfile(std::nullopt)) {}

void ProfileWatcher::start() {
    EventSubscription observer = workspace_.observeActivations(
        mainQueue_, [weakSelf = weak_from_this()](const std::optional<std::string>& bundleID) {
            if (auto self = weakSelf.lock()) self->activate(bundleID, /*force=*/false);
        });
    {
        MutexLock lock(mutex_);
        std::swap(observer_, observer);
    }
    activate(workspace_.frontmostBundleID(), /*force=*/false);
}

void ProfileWatcher::stop() {
    EventSubscription observer;
    MutexLock lock(mutex_);
    std::swap(observer_, observer);
}

void ProfileWatcher::update(Config config) {
    std::optional<std::string> bundleID;
    {
        MutexLock lock(mutex_);
        config_ = std::move(config);
        bundleID = frontmostBundleID_;
    }
    activate(bundleID, /*force=*/true);
}

void ProfileWatcher::activate(const std::optional<std::string>& bundleID, bool force) {
    ProfileResolution resolution;
    Profile profile;
    {
        MutexLock lock(mutex_);
        frontmostBundleID_ = bundleID;
        resolution = config_.resolve(bundleID);
        profile = config_.activeProfile(bundleID);
        if (!force && profile == currentProfile_) return;
        currentProfile_ = profile;
    }
    handler_(profile, bundleID, resolution);
}

Profile ProfileWatcher::currentProfile() const {
    MutexLock lock(mutex_);
    return currentProfile_;
}

std::optional<std::string> ProfileWatcher::frontmostBundleID() const {
    MutexLock lock(mutex_);
    return frontmostBundleID_;
}

}  // namespace tessara
