#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/WorkspaceService.h"

namespace tessara {

class Dispatcher;

/// The applications of a desktop session: desktop files for what is installed, and the display
/// server for what runs and what is in front. An application's identifier is the name of its
/// desktop file without ".desktop"; one without such a file goes by the name that its windows have.
///
/// Asks a Wayland compositor that offers its list of windows, or else an X11 display. Both are
/// asked on a queue of this service, so that nobody waits for them; what they told last is kept for
/// the questions. Shortly after the start, as without any of them, nothing is in front.
///
/// A server that goes away ends neither the service nor the program: nothing is in front from then
/// on, and `limitation` says why. No other is looked for afterwards.
class LinuxWorkspaceService final : public WorkspaceService {
  public:
    /// What WAYLAND_DISPLAY and DISPLAY hold; nothing where they are empty or not set.
    struct Displays {
        std::optional<std::string> wayland;
        std::optional<std::string> x11;

        /// Of the process's environment; to be called before there are other threads.
        [[nodiscard]] static Displays current();
    };

    /// Begins to ask. The service is used with queues that have threads.
    LinuxWorkspaceService(Dispatcher& dispatcher, Displays displays);
    /// Waits for an answer of the server that is under way.
    ~LinuxWorkspaceService() override;

    LinuxWorkspaceService(const LinuxWorkspaceService&) = delete;
    LinuxWorkspaceService& operator=(const LinuxWorkspaceService&) = delete;

    [[nodiscard]] std::optional<std::string> frontmostBundleID() const override;
    [[nodiscard]] EventSubscription observeActivations(std::shared_ptr<DispatchQueue> queue,
                                                       ActivationListener listener) override;
    // A location is the path of a desktop file. These read such files at each call, which takes
    // some milliseconds where hundreds are installed.

    [[nodiscard]] std::optional<std::string> locationOfApplication(
        const std::string& bundleID) const override;
    /// Brings a window of the application to the front where the display server lets that be asked
    /// for, and starts the application where none is known.
    void openApplication(const std::string& location, bool activates) override;
    [[nodiscard]] std::vector<RunningApplication> runningApplications() const override;
    [[nodiscard]] std::optional<std::string> displayName(
        const std::string& bundleID) const override;
    [[nodiscard]] std::optional<std::string> limitation() const override;

  private:
    class Session;

    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<Session> session_;
};

}  // namespace tessara
