#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tessara {

struct WindowIdentity;

/// An installed application, as its desktop file describes it.
struct DesktopEntry {
    /// The desktop file's name without ".desktop"; this is what identifies applications here.
    std::string id;
    /// In the user's language.
    std::string displayName;
    /// The path of the desktop file.
    std::string location;
    /// WM_CLASS of the windows that are its own, where the file names one.
    std::optional<std::string> startupWMClass;
    /// The first word of the command line: a path, or a name to be found in $PATH.
    std::string executable;
    /// Whether menus show it; handlers of files and the like are often kept out of them.
    bool isShown = true;

    bool operator==(const DesktopEntry&) const = default;
};

/// The entry that a window belongs to; null when none fits. In this order: the identifier, the
/// window's names against StartupWMClass, against the entries' identifiers and against the last
/// component of those, and at last the program's file name, which counts only when it is that of a
/// single shown entry. Letter case decides only between entries that fit alike otherwise.
[[nodiscard]] const DesktopEntry* entryOfWindow(std::span<const DesktopEntry> entries,
                                                const WindowIdentity& window);

/// The identifier that rules match for a window: its entry's, or else what the window calls itself,
/// so that rules can be made for applications that nobody installed. Nothing when it does not.
[[nodiscard]] std::optional<std::string> applicationIDOfWindow(
    std::span<const DesktopEntry> entries, const WindowIdentity& window);

/// The applications that are installed for this user, read from the desktop files in the folders
/// $XDG_DATA_HOME and $XDG_DATA_DIRS name. Nothing is kept: each call sees what is installed then,
/// which takes some milliseconds where hundreds are. Any thread, except the tap's.
class DesktopEntries {
  public:
    /// Every entry that is not hidden, sorted by identifier.
    [[nodiscard]] static std::vector<DesktopEntry> all();

    /// The entry of that identifier; nothing when there is none.
    [[nodiscard]] static std::optional<DesktopEntry> find(const std::string& id);

    /// The entry of the desktop file at that path; nothing when there is none that is installed.
    [[nodiscard]] static std::optional<DesktopEntry> findAt(const std::string& location);

    /// Starts the application of a desktop file, without waiting for it. It has a session of its
    /// own, none of our descriptors and its output nowhere, and it outlives us. False when it could
    /// not be started.
    static bool launch(const std::string& location);
};

}  // namespace tessara
