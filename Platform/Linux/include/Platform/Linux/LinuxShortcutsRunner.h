#pragma once

#include <memory>
#include <string>

#include "Platform/WorkspaceService.h"

namespace tessara {

class DispatchQueue;

/// Named Shortcuts are executables of that name in one folder of the user's, started without
/// arguments. They run on their own: nobody waits for them, their output goes nowhere, and they
/// outlive the program. What a Shortcut does, and whether it worked, is not heard of.
class LinuxShortcutsRunner final : public ShortcutsRunner {
  public:
    /// `folder` need not exist; Shortcuts put there later are found. Programs are started on
    /// `queue`, where a moment's work delays nothing, and inherit the priority of its class.
    LinuxShortcutsRunner(std::string folder, std::shared_ptr<DispatchQueue> queue);

    /// Whether a Shortcut can have that name: one that stays in the folder and is not hidden there.
    [[nodiscard]] static bool isName(const std::string& name);

    void runShortcut(const std::string& name) override;

  private:
    const std::string folder_;
    const std::shared_ptr<DispatchQueue> queue_;
};

}  // namespace tessara
