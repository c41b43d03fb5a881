#pragma once

#include <string>

#include <sys/types.h>

#include "Platform/PermissionHelp.h"

namespace tessara {

class LinuxPermissionService;

/// Rights on device nodes come from udev's rules, which only an administrator can put into place:
/// the program `tessara-grant-access` does, run by polkit's pkexec. What is missing is for
/// `LinuxPermissionReport` to say; here it becomes lines to show.
///
/// There are three findings: to post, to see the mouse's events, to speak with the mouse. That the
/// keyboards may not be read stands with the second and does not make it a missing one: the program
/// does without, and no command of its grants it.
class LinuxPermissionHelp final : public PermissionHelp {
  public:
    /// `grantProgram` is the path of `tessara-grant-access`. The service outlives this.
    LinuxPermissionHelp(const LinuxPermissionService& permissions, std::string grantProgram);

    /// Where `tessara-grant-access` is for a program that stands in `folder`: below the prefix that
    /// it is installed under, or in the tree that it was built in. The bare name when it is in
    /// neither.
    [[nodiscard]] static std::string findGrantProgram(const std::string& folder);

    [[nodiscard]] std::vector<PermissionFinding> findings() const override;
    [[nodiscard]] std::string command() const override;
    void grant() override;

  private:
    const LinuxPermissionService& permissions_;
    const std::string grantProgram_;
    // Main executor.
    /// pkexec while it asks, or since; 0 when there is none to be waited for.
    pid_t asker_ = 0;
};

}  // namespace tessara
