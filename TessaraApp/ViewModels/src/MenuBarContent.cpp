#include "TessaraApp/ViewModels/MenuBarContent.h"

#include <utility>

#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/LaunchAtLogin.h"
#include "TessaraApp/UpdaterController.h"

namespace tessara {

MenuBarContent::MenuBarContent(AppModel& model, Program program)
    : model_(model), program_(std::move(program)) {
    connect(&model_, &AppModel::statusChanged, this, &MenuBarContent::refresh);
    connect(&model_, &AppModel::permissionsChanged, this, &MenuBarContent::refresh);
    connect(&model_, &AppModel::menuBarStatusChanged, this, &MenuBarContent::refresh);
    connect(&model_.preferences(), &AppPreferences::isPausedByUserChanged, this,
            &MenuBarContent::refresh);
    connect(&model_.launchAtLogin(), &LaunchAtLogin::statusChanged, this, &MenuBarContent::refresh);
    refresh();
}

void MenuBarContent::run(Command command) {
    switch (command) {
        case Command::none:
            break;
        case Command::pause:
            model_.setPausedByUser(!model_.preferences().isPausedByUser());
            break;
        case Command::startAtLogin:
            model_.launchAtLogin().setEnabled(!model_.launchAtLogin().isEnabled());
            break;
        case Command::finishSettingUp:
            program_.showOnboarding();
            break;
        case Command::openSettings:
            program_.showSettings();
            break;
        case Command::checkForUpdates:
            model_.updater().checkForUpdates();
            break;
        case Command::quit:
            model_.stop();
            program_.terminate();
            break;
    }
}

void MenuBarContent::refresh() {
    auto items = currentItems();
    const QString symbol = model_.menuBarSymbol();
    const QString label = tr("Tessara — %1").arg(model_.menuBarHeadline());
    if (items == items_ && symbol == symbol_ && label == label_) return;
    items_ = std::move(items);
    symbol_ = symbol;
    label_ = label;
    Q_EMIT changed();
}

std::vector<MenuBarContent::Item> MenuBarContent::currentItems() const {
    const PermissionState& permissions = model_.permissions();
    std::vector<Item> items{{.text = model_.menuBarHeadline()}};
    if (const QString detail = model_.menuBarDetail(); !detail.isEmpty())
        items.push_back({.text = detail});
    items.push_back({});
    items.push_back({.command = Command::pause,
                     .text = tr("Pause Tessara"),
                     .isChecked = model_.preferences().isPausedByUser()});
    items.push_back(
        {.text = tr("Profile: %1").arg(QString::fromStdString(model_.status().activeProfileName))});
    items.push_back({});
    items.push_back({.command = Command::startAtLogin,
                     .text = tr("Start at Login"),
                     .isChecked = model_.launchAtLogin().isEnabled()});
    if (!permissions.accessibility || !permissions.inputMonitoring) {
        items.push_back(
            {.command = Command::finishSettingUp, .text = tr("Finish Setting Up Tessara…")});
    }
    items.push_back({.command = Command::openSettings,
                     .text = tr("Settings…"),
                     .shortcut = QStringLiteral("Ctrl+,")});
    items.push_back({.command = Command::checkForUpdates, .text = tr("Check for Updates…")});
    items.push_back({});
    items.push_back({.command = Command::quit,
                     .text = tr("Quit Tessara"),
                     .shortcut = QStringLiteral("Ctrl+Q")});
    return items;
}

}  // namespace tessara
