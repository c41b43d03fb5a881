#pragma once

#include <optional>
#include <string>

namespace tessara {

struct EngineStatus;
struct PermissionState;

/// How the program stands, as the menu bar tells it: the name of a symbol, a headline, and a line
/// beneath it where there is more to say.
struct MenuBarStatus {
    std::string symbol;
    std::string headline;
    std::optional<std::string> detail;

    /// What stands in the way most comes first: a missing permission, then a pause, then a tap that
    /// is not there, then the mouse.
    [[nodiscard]] static MenuBarStatus of(const PermissionState& permissions, bool isPausedByUser,
                                          const EngineStatus& status);

    bool operator==(const MenuBarStatus&) const = default;
};

}  // namespace tessara
