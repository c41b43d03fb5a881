#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch/EventStream.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Simulated/SimulatedApplication.h"
#include "Platform/WorkspaceService.h"

namespace tessara {

/// The applications of the simulated desktop: installed, running, and one of them, or none, in
/// front. At first nothing is installed and nothing is in front. All operations may be called from
/// any thread and take effect at once; listeners hear of a change on their queues.
class SimulatedWorkspace final : public WorkspaceService {
  public:
    /// One call of `openApplication`.
    struct Opening {
        std::string location;
        bool activates = false;
        bool operator==(const Opening&) const = default;
    };

    /// Installs an application, not running. The reference holds as long as the workspace. A second
    /// application with the same identifier or at the same place stops the process.
    SimulatedApplication& install(SimulatedApplicationDescription description);
    SimulatedApplication& install(std::string bundleID, std::string displayName);

    /// The installed application; an identifier that is not installed stops the process.
    [[nodiscard]] SimulatedApplication& application(const std::string& bundleID) const;

    /// Starts the application if need be and brings it to the front, which is announced, also when
    /// it was in front before.
    void bringToFront(SimulatedApplication& application);
    void bringToFront(const std::string& bundleID);

    /// Leaves no application in front; announced without an identifier.
    void bringNoneToFront();

    /// Announces a change of the application in front without saying which it is; nothing changes.
    void announceWithoutApplication();

    /// Ends the application; if it was in front none is, unannounced.
    void quit(SimulatedApplication& application);

    /// From now on the session is one that cannot tell the application in front, for that reason.
    void setLimitation(std::string sentence);

    /// Every call of `openApplication`, oldest first.
    [[nodiscard]] std::vector<Opening> openings() const;

    /// The application in front; null when there is none.
    [[nodiscard]] SimulatedApplication* frontmost() const;

    [[nodiscard]] std::optional<std::string> frontmostBundleID() const override;
    [[nodiscard]] EventSubscription observeActivations(std::shared_ptr<DispatchQueue> queue,
                                                       ActivationListener listener) override;
    [[nodiscard]] std::optional<std::string> locationOfApplication(
        const std::string& bundleID) const override;
    void openApplication(const std::string& location, bool activates) override;
    [[nodiscard]] std::vector<RunningApplication> runningApplications() const override;
    [[nodiscard]] std::optional<std::string> displayName(
        const std::string& bundleID) const override;
    [[nodiscard]] std::optional<std::string> limitation() const override;

  private:
    [[nodiscard]] SimulatedApplication* find(const std::string& bundleID) const
        TESSARA_REQUIRES(mutex_);
    [[nodiscard]] SimulatedApplication* findAt(const std::string& location) const
        TESSARA_REQUIRES(mutex_);

    EventStream<std::optional<std::string>> activations_;
    mutable Mutex mutex_;
    std::vector<std::unique_ptr<SimulatedApplication>> installed_ TESSARA_GUARDED_BY(mutex_);
    SimulatedApplication* frontmost_ TESSARA_GUARDED_BY(mutex_) = nullptr;
    std::vector<Opening> openings_ TESSARA_GUARDED_BY(mutex_);
    std::optional<std::string> limitation_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
