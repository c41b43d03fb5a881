#pragma once

#include <QObject>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "Platform/UpdaterService.h"

namespace tessara {

class AppPreferences;

/// The updater as the interface shows it: switches it on when all else runs, keeps its switch in
/// step with the preferences, and brings the application to the front when the user is asked
/// something. How updates are found and verified is the service's.
///
/// Main executor only.
class UpdaterController : public QObject, private UpdaterDelegate {
    Q_OBJECT
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY changed)

  public:
    /// Brings the application to the front; empty where there is nothing to bring.
    using ActivateApplication = std::function<void()>;

    /// Starts nothing, and is the service's delegate from here on. `current` is this copy of the
    /// program. Service and preferences outlive this.
    UpdaterController(UpdaterService& service, const AppPreferences& preferences,
                      ProgramVersion current, ActivateApplication activateApplication);
    ~UpdaterController() override;

    /// Starts the updater, with its switch as the preferences have it before any check. Once; a
    /// second call does nothing.
    void start();

    /// Gives the preference for automatic checks to the updater, if they differ. For whoever has
    /// changed the preference: this does not watch it.
    void syncAutomaticChecks();

    /// A check that the user asked for: the application comes to the front first, and also when no
    /// check can be made. What comes of it is told by `state`.
    void checkForUpdates();

    /// As the service says: also false when no feed is configured, which `state` tells apart from
    /// a check that is under way.
    [[nodiscard]] bool canCheckForUpdates() const { return service_.canCheckForUpdates(); }
    /// Nothing when the feed was never read, here or in an earlier run.
    [[nodiscard]] std::optional<std::chrono::sys_seconds> lastUpdateCheckDate() const {
        return service_.lastUpdateCheckDate();
    }
    /// Nothing when none is configured.
    [[nodiscard]] std::optional<std::string> feedURL() const { return service_.feedURL(); }
    [[nodiscard]] UpdaterState state() const { return service_.state(); }

    /// The user's answers, as the service has them: each does nothing in a state that it is no
    /// answer to.
    void downloadUpdate() { service_.downloadUpdate(); }
    void installUpdate() { service_.installUpdate(); }
    void dismissUpdate() { service_.dismissUpdate(); }

    /// "{version} (build {build})".
    [[nodiscard]] std::string currentVersionDescription() const;

  Q_SIGNALS:
    /// The state, the last check's date or the possibility of a check may have changed.
    void changed();

  private:
    void updaterDidChange() override;
    void updaterWillAskUser() override;

    UpdaterService& service_;
    const AppPreferences& preferences_;
    const ProgramVersion current_;
    const ActivateApplication activateApplication_;
    bool hasStarted_ = false;
};

}  // namespace tessara
