#include "TessaraApp/LaunchAtLogin.h"

#include <utility>

namespace tessara {

LaunchAtLogin::LaunchAtLogin(LoginItemService& service) : service_(service) {}

std::string LaunchAtLogin::statusText() const {
    switch (status_) {
        case LoginItemStatus::notRegistered:
            return tr("Tessara will not start on its own. Your mouse forgets its DPI, report rate "
                      "and "
                      "wheel mode every time it is unplugged or the Mac reboots, so they will only "
                      "come back once you open Tessara.")
                .toStdString();
        case LoginItemStatus::enabled:
            return tr("Tessara will start automatically when you log in, and put your DPI, report "
                      "rate and wheel settings back on the mouse.")
                .toStdString();
        case LoginItemStatus::requiresApproval:
            return tr("macOS is waiting for you to allow Tessara in System Settings › General › "
                      "Login Items.")
                .toStdString();
        case LoginItemStatus::notFound:
            return tr("macOS cannot find Tessara's login item. Move Tessara.app to your "
                      "Applications "
                      "folder and try again.")
                .toStdString();
        case LoginItemStatus::unknown:
            break;
    }
    return tr("Tessara could not determine whether it starts at login.").toStdString();
}

void LaunchAtLogin::refresh() {
    const LoginItemStatus status = service_.status();
    if (status == status_) return;
    status_ = status;
    Q_EMIT statusChanged();
}

void LaunchAtLogin::setEnabled(bool isEnabled) {
    setLastError(std::nullopt);
    const auto done = isEnabled ? service_.registerItem() : service_.unregisterItem();
    if (!done) setLastError(done.error());
    refresh();
}

void LaunchAtLogin::setLastError(std::optional<std::string> error) {
    if (error == lastError_) return;
    lastError_ = std::move(error);
    Q_EMIT lastErrorChanged();
}

}  // namespace tessara
