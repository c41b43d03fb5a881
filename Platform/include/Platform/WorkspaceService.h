#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch/EventStream.h"

namespace tessara {

class DispatchQueue;

/// An application that is running, as a person would pick it from a list.
struct RunningApplication {
    /// The identifier that rules match; absent for a program without one.
    std::optional<std::string> bundleID;
    /// The name shown to the user.
    std::string displayName;
    /// False for agents and helpers without windows, which a list for the user leaves out.
    bool isRegular = true;
    bool operator==(const RunningApplication&) const = default;
};

/// Knows which application is in front, and starts applications. Operations may be called from any
/// thread unless they say otherwise; none of them waits for an application.
class WorkspaceService {
  public:
    /// Called with the identifier of what came to the front, as far as it is known.
    using ActivationListener = std::function<void(const std::optional<std::string>& bundleID)>;

    virtual ~WorkspaceService() = default;

    /// The application in front; nothing when there is none or when it has no identifier.
    [[nodiscard]] virtual std::optional<std::string> frontmostBundleID() const = 0;

    /// Calls `listener` on `queue` each time another application comes to the front, with its
    /// identifier, or nothing when the system did not say which it was.
    [[nodiscard]] virtual EventSubscription observeActivations(std::shared_ptr<DispatchQueue> queue,
                                                               ActivationListener listener) = 0;

    /// Where the application with this identifier is installed; nothing when there is none.
    [[nodiscard]] virtual std::optional<std::string> locationOfApplication(
        const std::string& bundleID) const = 0;

    /// Starts the application at a location that `locationOfApplication` gave, or brings it to the
    /// front when it runs. Returns at once; a failure is not told.
    virtual void openApplication(const std::string& location, bool activates) = 0;

    /// What runs now, in no particular order; one entry for each identifier. Empty where the system
    /// does not tell.
    [[nodiscard]] virtual std::vector<RunningApplication> runningApplications() const = 0;

    /// The name under which the user knows the application; nothing when it is not installed.
    [[nodiscard]] virtual std::optional<std::string> displayName(
        const std::string& bundleID) const = 0;

    /// Why the application in front cannot be told in this session, in a sentence for the user;
    /// nothing where it can.
    [[nodiscard]] virtual std::optional<std::string> limitation() const { return std::nullopt; }
};

/// Runs the user's named Shortcuts. Returns at once; a Shortcut that is missing or fails is
/// dropped. Any thread.
class ShortcutsRunner {
  public:
    virtual ~ShortcutsRunner() = default;

    /// Runs the Shortcut with exactly this name.
    virtual void runShortcut(const std::string& name) = 0;
};

}  // namespace tessara
