#include "Platform/Simulated/SimulatedPermissions.h"

#include <utility>

namespace tessara {

SimulatedPermissions::SimulatedPermissions(std::function<void()> onAccessibilityRevoked)
    : onAccessibilityRevoked_(std::move(onAccessibilityRevoked)) {}

void SimulatedPermissions::grantAccessibility() {
    hasAccessibility_.store(true);
}

void SimulatedPermissions::revokeAccessibility() {
    const bool wasGranted = hasAccessibility_.exchange(false);
    if (wasGranted && onAccessibilityRevoked_) onAccessibilityRevoked_();
}

void SimulatedPermissions::grantInputMonitoring() {
    hasInputMonitoring_.store(true);
}

void SimulatedPermissions::revokeInputMonitoring() {
    hasInputMonitoring_.store(false);
}

bool SimulatedPermissions::isProcessTrusted() const {
    return hasAccessibility_.load();
}

bool SimulatedPermissions::preflightListenEventAccess() const {
    return hasInputMonitoring_.load();
}

}  // namespace tessara
