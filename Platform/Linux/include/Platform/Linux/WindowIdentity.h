#pragma once

#include <optional>
#include <string>

namespace tessara {

/// What a window says of the application that it belongs to. Each of these may be missing, and none
/// of them is checked: they are the application's own words. Which application that makes is for
/// `entryOfWindow` to say.
struct WindowIdentity {
    /// The application's identifier: a Wayland toplevel's app_id, or _GTK_APPLICATION_ID.
    std::optional<std::string> applicationID;
    /// The two strings of WM_CLASS (Inter-Client Communication Conventions, 4.1.2.5): what this
    /// window is, and what kind of program it is of. X11 only.
    std::optional<std::string> instanceName;
    std::optional<std::string> className;
    /// The path of the program that made the window. X11 only, and only for this user's programs on
    /// this computer.
    std::optional<std::string> executable;

    bool operator==(const WindowIdentity&) const = default;
};

}  // namespace tessara
