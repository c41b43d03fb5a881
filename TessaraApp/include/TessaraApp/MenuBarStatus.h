#pragma once

#include <optional>
#include <string>

namespace tessara {

struct EngineStatus;
struct PermissionState;

/// How the program stands, as the menu bar tells it. A plain value: what it is made of is read
/// elsewhere, and nothing is drawn here.
struct MenuBarStatus {
    /// The name of a symbol, of those that the interface's icons know.
    std::string symbol;
    /// A few words.
    std::string headline;
    /// A line beneath, where there is more to say.
    std::optional<std::string> detail;

    /// What stands in the way most comes first: a missing permission, then a pause, then a tap that
    /// is not there, then the mouse. Texts are in the user's language.
    [[nodiscard]] static MenuBarStatus of(const PermissionState& permissions, bool isPausedByUser,
                                          const EngineStatus& status);

    bool operator==(const MenuBarStatus&) const = default;
};

}  // namespace tessara
