#pragma once

#include <vector>

#include "Platform/Linux/LinuxPermissionReport.h"
#include "Platform/PermissionService.h"

namespace tessara {

/// The user's grants as rights on device nodes: to post events is to write to /dev/uinput, to
/// listen is to read the mouse's input nodes. It never asks the user for anything, and keeps
/// nothing: each question looks again, in some hundred system calls.
class LinuxPermissionService final : public PermissionService {
  public:
    /// For mice of these numbers. `system` is where to look; a test's is a folder.
    explicit LinuxPermissionService(std::vector<InputDeviceMatch> mice,
                                    LinuxPermissionReport::System system = {});
    ~LinuxPermissionService() override;

    /// What is granted and what is missing, in detail. Any thread.
    [[nodiscard]] LinuxPermissionReport report() const;

    [[nodiscard]] bool isProcessTrusted() const override;
    [[nodiscard]] bool preflightListenEventAccess() const override;

  private:
    const std::vector<InputDeviceMatch> mice_;
    const LinuxPermissionReport::System system_;
};

}  // namespace tessara
