#include "Platform/Simulated/SimulatedWorkspace.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "ScriptFault.h"

namespace tessara {

SimulatedApplication& SimulatedWorkspace::install(SimulatedApplicationDescription description) {
    if (description.location.empty()) {
        description.location = fmt::format("/Applications/{}", description.displayName);
    }
    MutexLock lock(mutex_);
    if ((description.bundleID && find(*description.bundleID)) || findAt(description.location)) {
        stopForScriptFault(fmt::format("an application is installed already as {} or at {}",
                                       description.bundleID.value_or("(no identifier)"),
                                       description.location));
    }
    installed_.push_back(std::make_unique<SimulatedApplication>(std::move(description)));
    return *installed_.back();
}

SimulatedApplication& SimulatedWorkspace::install(std::string bundleID, std::string displayName) {
    return install({.bundleID = std::move(bundleID),
                    .displayName = std::move(displayName),
                    .location = {},
                    .isRegular = true});
}

SimulatedApplication& SimulatedWorkspace::application(const std::string& bundleID) const {
    MutexLock lock(mutex_);
    auto* found = find(bundleID);
    if (!found) stopForScriptFault(fmt::format("no application {} is installed", bundleID));
    return *found;
}

void SimulatedWorkspace::bringToFront(SimulatedApplication& application) {
    MutexLock lock(mutex_);
    application.setRunning(true);
    frontmost_ = &application;
    // Under the lock, so that what listeners hear last is what is in front.
    activations_.emit(application.description().bundleID);
}

void SimulatedWorkspace::bringToFront(const std::string& bundleID) {
    bringToFront(application(bundleID));
}

void SimulatedWorkspace::bringNoneToFront() {
    MutexLock lock(mutex_);
    frontmost_ = nullptr;
    activations_.emit(std::nullopt);
}

void SimulatedWorkspace::announceWithoutApplication() {
    activations_.emit(std::nullopt);
}

void SimulatedWorkspace::quit(SimulatedApplication& application) {
    MutexLock lock(mutex_);
    application.setRunning(false);
    if (frontmost_ == &application) frontmost_ = nullptr;
}

std::vector<SimulatedWorkspace::Opening> SimulatedWorkspace::openings() const {
    MutexLock lock(mutex_);
    return openings_;
}

SimulatedApplication* SimulatedWorkspace::frontmost() const {
    MutexLock lock(mutex_);
    return frontmost_;
}

std::optional<std::string> SimulatedWorkspace::frontmostBundleID() const {
    const auto* application = frontmost();
    return application ? application->description().bundleID : std::nullopt;
}

EventSubscription SimulatedWorkspace::observeActivations(std::shared_ptr<DispatchQueue> queue,
                                                         ActivationListener listener) {
    return activations_.subscribe(std::move(queue), std::move(listener));
}

std::optional<std::string> SimulatedWorkspace::locationOfApplication(
    const std::string& bundleID) const {
    MutexLock lock(mutex_);
    const auto* found = find(bundleID);
    if (!found) return std::nullopt;
    return found->description().location;
}

void SimulatedWorkspace::openApplication(const std::string& location, bool activates) {
    SimulatedApplication* found = nullptr;
    {
        MutexLock lock(mutex_);
        openings_.push_back({.location = location, .activates = activates});
        found = findAt(location);
    }
    if (!found) return;
    found->setRunning(true);
    if (activates) bringToFront(*found);
}

std::vector<RunningApplication> SimulatedWorkspace::runningApplications() const {
    MutexLock lock(mutex_);
    std::vector<RunningApplication> running;
    for (const auto& application : installed_) {
        if (!application->isRunning()) continue;
        const auto& description = application->description();
        running.push_back({.bundleID = description.bundleID,
                           .displayName = description.displayName,
                           .isRegular = description.isRegular});
    }
    return running;
}

std::optional<std::string> SimulatedWorkspace::displayName(const std::string& bundleID) const {
    MutexLock lock(mutex_);
    const auto* found = find(bundleID);
    if (!found) return std::nullopt;
    return found->description().displayName;
}

void SimulatedWorkspace::setLimitation(std::string sentence) {
    MutexLock lock(mutex_);
    limitation_ = std::move(sentence);
}

std::optional<std::string> SimulatedWorkspace::limitation() const {
    MutexLock lock(mutex_);
    return limitation_;
}

SimulatedApplication* SimulatedWorkspace::find(const std::string& bundleID) const {
    const auto found = std::ranges::find_if(installed_, [&](const auto& application) {
        return application->description().bundleID == bundleID;
    });
    return found == installed_.end() ? nullptr : found->get();
}

SimulatedApplication* SimulatedWorkspace::findAt(const std::string& location) const {
    const auto found = std::ranges::find_if(installed_, [&](const auto& application) {
        return application->description().location == location;
    });
    return found == installed_.end() ? nullptr : found->get();
}

}  // namespace tessara
