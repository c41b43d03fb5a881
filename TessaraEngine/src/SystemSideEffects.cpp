#include "TessaraEngine/SystemSideEffects.h"

#include <utility>

#include "Platform/WorkspaceService.h"

namespace tessara {

SystemSideEffects::SystemSideEffects(DPIHandler dpiHandler, bool allowsAppLaunch,
                                     bool allowsShortcuts, WorkspaceService& workspace,
                                     ShortcutsRunner& shortcuts)
    : dpiHandler_(std::move(dpiHandler)),
      allowsAppLaunch_(allowsAppLaunch),
      allowsShortcuts_(allowsShortcuts),
      workspace_(workspace),
      shortcuts_(shortcuts) {}

void SystemSideEffects::requestDPI(std::int64_t dpi) {
    dpiHandler_(dpi);
}

void SystemSideEffects::launchApp(const std::string& bundleID) {
    if (!allowsAppLaunch_) return;
    if (const auto location = workspace_.locationOfApplication(bundleID)) {
        workspace_.openApplication(*location, /*activates=*/true);
    }
}

void SystemSideEffects::runShortcut(const std::string& name) {
    if (allowsShortcuts_) shortcuts_.runShortcut(name);
}

}  // namespace tessara
