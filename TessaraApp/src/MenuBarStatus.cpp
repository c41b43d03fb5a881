#include "TessaraApp/MenuBarStatus.h"

#include <QCoreApplication>

#include "TessaraEngine/EngineStatus.h"

namespace tessara {
namespace {

/// The texts' context for translators.
class Texts {
    Q_DECLARE_TR_FUNCTIONS(MenuBarStatus)
};

QString missingPermissions(const PermissionState& permissions) {
    if (permissions.accessibility) return Texts::tr("Missing: Input Monitoring");
    if (permissions.inputMonitoring) return Texts::tr("Missing: Accessibility");
    return Texts::tr("Missing: Input Monitoring and Accessibility");
}

QString headlineOf(const EngineStatus& status) {
    if (!status.isTapEnabled) return Texts::tr("Not running");
    return status.targetDeviceAttached ? Texts::tr("Active") : Texts::tr("Waiting for your mouse");
}

}  // namespace

MenuBarStatus MenuBarStatus::of(const PermissionState& permissions, bool isPausedByUser,
                                const EngineStatus& status) {
    if (!permissions.accessibility || !permissions.inputMonitoring) {
        return {.symbol = "exclamationmark.triangle.fill",
                .headline = Texts::tr("Needs permission to run").toStdString(),
                .detail = missingPermissions(permissions).toStdString()};
    }
    if (isPausedByUser) {
        return {.symbol = "pause.circle",
                .headline = Texts::tr("Paused").toStdString(),
                .detail = Texts::tr("Your mouse behaves exactly as macOS ships it").toStdString()};
    }
    const bool hasMouse = status.targetDeviceAttached;
    return {.symbol = hasMouse ? "computermouse.fill" : "computermouse",
            .headline = headlineOf(status).toStdString(),
            .detail = hasMouse ? std::nullopt
                               : std::optional(
                                     Texts::tr("No Logitech mouse is plugged in").toStdString())};
}

}  // namespace tessara
