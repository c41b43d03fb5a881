#pragma once

#include <functional>

#include "TessaraEngine/MacroSideEffects.h"

namespace tessara {

class ShortcutsRunner;
class WorkspaceService;

/// Side effects on the real desktop: applications through the workspace, Shortcuts through their
/// runner, and the mouse's resolution through a function of the engine's. It waits for none of them
/// and reports nothing: an application that is not installed and a shortcut that fails are left at
/// that. Any thread that the services allow; the macro executor calls it on its queue.
class SystemSideEffects final : public MacroSideEffects {
  public:
    /// Called on the macro queue; must return at once.
    using DPIHandler = std::function<void(std::int64_t dpi)>;

    /// What is not allowed is left undone. The services must outlive this.
    SystemSideEffects(DPIHandler dpiHandler, bool allowsAppLaunch, bool allowsShortcuts,
                      WorkspaceService& workspace, ShortcutsRunner& shortcuts);

    void requestDPI(std::int64_t dpi) override;
    void launchApp(const std::string& bundleID) override;
    void runShortcut(const std::string& name) override;

  private:
    const DPIHandler dpiHandler_;
    const bool allowsAppLaunch_;
    const bool allowsShortcuts_;
    WorkspaceService& workspace_;
    ShortcutsRunner& shortcuts_;
};

}  // namespace tessara
