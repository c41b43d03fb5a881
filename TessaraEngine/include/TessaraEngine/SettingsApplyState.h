#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace tessara {

/// Nothing has been applied, or the mouse is not there.
struct SettingsIdle {
    bool operator==(const SettingsIdle&) const = default;
};
/// An apply has begun.
struct SettingsApplying {
    bool operator==(const SettingsApplying&) const = default;
};
/// The last apply has ended.
struct SettingsApplied {
    /// The resolution that the mouse last confirmed.
    std::optional<std::int64_t> dpi;
    bool operator==(const SettingsApplied&) const = default;
};
/// The last apply failed.
struct SettingsFailed {
    /// Why, in words for the user (`HIDPPError::description`).
    std::string reason;
    bool operator==(const SettingsFailed&) const = default;
};
/// The program may not talk to the mouse.
struct SettingsNotPermitted {
    bool operator==(const SettingsNotPermitted&) const = default;
};

/// How the mouse's settings stand, for display. Nothing is decided by it: a mouse that becomes
/// ready is set whatever was said before.
using SettingsApplyState = std::variant<SettingsIdle, SettingsApplying, SettingsApplied,
                                        SettingsFailed, SettingsNotPermitted>;

}  // namespace tessara
