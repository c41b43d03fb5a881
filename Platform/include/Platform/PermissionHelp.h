#pragma once

#include <string>
#include <vector>

namespace tessara {

/// One thing that the program needs the system to let it have, and how that stands.
struct PermissionFinding {
    /// A sentence for the user: what it is, and what is wrong with it if something is.
    std::string description;
    bool isGranted = false;

    bool operator==(const PermissionFinding&) const = default;
};

/// Helps the user to grant what is missing, on a platform that has no page of its settings for it.
/// Main executor only.
class PermissionHelp {
  public:
    virtual ~PermissionHelp() = default;

    /// Everything that is needed, in a fixed order. Cheap enough for a watch.
    [[nodiscard]] virtual std::vector<PermissionFinding> findings() const = 0;

    /// What an administrator types to put everything right, for the user to read and to copy.
    [[nodiscard]] virtual std::string command() const = 0;

    /// Runs the command after the system has asked for an administrator's password. Returns at
    /// once; that it was refused shows by what is still missing.
    virtual void grant() = 0;
};

}  // namespace tessara
