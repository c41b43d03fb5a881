#include "TessaraApp/MenuBarStatus.h"

#include "TessaraEngine/EngineStatus.h"

namespace tessara {
namespace {

constexpr const char* mouseIsMissing = "No Logitech mouse is plugged in";

std::string missingPermissions(const PermissionState& permissions) {
    if (permissions.accessibility) return "Missing: Input Monitoring";
    if (permissions.inputMonitoring) return "Missing: Accessibility";
    return "Missing: Input Monitoring and Accessibility";
}

}  // namespace

MenuBarStatus MenuBarStatus::of(const PermissionState& permissions, bool isPausedByUser,
                                const EngineStatus& status) {
    if (!permissions.accessibility || !permissions.inputMonitoring) {
        return {.symbol = "exclamationmark.triangle.fill",
                .headline = "Needs permission to run",
                .detail = missingPermissions(permissions)};
    }
    if (isPausedByUser) {
        return {.symbol = "pause.circle",
                .headline = "Paused",
                .detail = "Your mouse behaves exactly as macOS ships it"};
    }
    const bool isActive = status.isTapEnabled && status.targetDeviceAttached;
    MenuBarStatus told{
        .symbol = status.targetDeviceAttached ? "computermouse.fill" : "computermouse",
        .headline = isActive              ? "Active"
                    : status.isTapEnabled ? "Waiting for your mouse"
                                          : "Not running",
        .detail = {}};
    if (!status.targetDeviceAttached) told.detail = mouseIsMissing;
    return told;
}

}  // namespace tessara
