#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch/EventStream.h"
#include "TessaraCore/Config.h"
#include "TessaraEngine/EnginePlatform.h"
#include "TessaraEngine/EngineStatus.h"
#include "TessaraEngine/EventTapController.h"

namespace tessara {

class DPISink;
class EventPosting;
class InputRouter;
class MacroExecutor;
class ProfileWatcher;

/// The conductor: builds everything that acts on the user's input, starts and stops the tap,
/// changes profiles, and says in one `EngineStatus` how things stand.
///
/// Events do not pass through it. Once started they go from the tap through the router to the
/// pipelines, on the tap thread; the engine only changes what those work with, between two events.
///
/// All methods run on the main executor. Work that it schedules holds it weakly, so it is made
/// shared: `std::make_shared<TessaraEngine>(...)`. Stop it before the last holder lets go.
class TessaraEngine : public std::enable_shared_from_this<TessaraEngine> {
  public:
    struct Options {
        /// The mice to reshape.
        std::vector<HIDPPDeviceMatch> deviceMatches;
        EventTapController::Configuration tap;
        /// Where everything goes that the engine makes itself.
        std::shared_ptr<EventPosting> poster;
        bool allowsAppLaunch = true;
        bool allowsShortcuts = true;
        /// Whether motion is taken raw and the cursor moved by the engine; needs the platform's
        /// cursor service.
        bool repositionsCursor = true;
        /// The user has paused the program. The document that the engine is given already says so.
        bool isPausedByUser = false;
    };

    /// Builds everything; nothing runs yet but a first look at the input devices.
    TessaraEngine(Config config, Options options, const EnginePlatform& platform);
    ~TessaraEngine();

    TessaraEngine(const TessaraEngine&) = delete;
    TessaraEngine& operator=(const TessaraEngine&) = delete;

    /// Starts the tap and follows the application in front. Does nothing when it runs. With a
    /// disabled document it starts nothing and says so in the status. After a failure the watcher
    /// goes on, and a later start may succeed.
    [[nodiscard]] std::expected<void, EventTapController::StartError> start();

    /// Ends everything, the tap first, and returns when all that was held has been let go. May be
    /// called again, and before any start.
    void stop();

    /// Takes a new document: starts, stops or restarts as it asks, or applies it as it runs. That
    /// the tap cannot be made is not told here; the status shows it.
    void update(Config config);

    [[nodiscard]] const Config& currentConfig() const { return config_; }

    /// Chooses the profile for that application, and applies it in any case.
    void activateProfile(const std::optional<std::string>& bundleID);

    [[nodiscard]] const EngineStatus& status() const { return status_; }

    /// Called on the main executor with each status that differs from the last.
    void setOnStatusChange(std::function<void(const EngineStatus&)> onStatusChange) {
        onStatusChange_ = std::move(onStatusChange);
    }

    /// Gives the present status, and then each that differs from the last, to `listener` on
    /// `queue`.
    [[nodiscard]] EventSubscription statusStream(std::shared_ptr<DispatchQueue> queue,
                                                 EventStream<EngineStatus>::Listener listener);

    /// Bring the status up to date.
    void refreshPermissions();
    void refreshMetrics();

    [[nodiscard]] bool isPausedByUser() const { return options_.isPausedByUser; }
    void setPausedByUser(bool isPaused) { options_.isPausedByUser = isPaused; }

  private:
    /// Begins with `profile`, which is the document's for no application.
    TessaraEngine(const Profile& profile, Config&& config, Options&& options,
                  const EnginePlatform& platform);

    [[nodiscard]] std::uint64_t requiredTapMask() const;
    void applyProfile(const Profile& profile, const std::optional<std::string>& bundleID);
    void handleTapDisabled(TapDisableReason reason);
    [[nodiscard]] std::shared_ptr<ProfileWatcher> makeWatcher();
    [[nodiscard]] std::unique_ptr<EventTapController> makeTapController(std::uint64_t mask);

    /// Stores a status and tells of it when it differs.
    void publish(EngineStatus status);
    template <typename Change>
    void changeStatus(Change change) {
        EngineStatus changed = status_;
        change(changed);
        publish(std::move(changed));
    }

    const EnginePlatform platform_;

    // Built once; each takes care of its own state.
    DeviceScope scope_;
    ScrollPipeline scrollPipeline_;
    PointerPipeline pointerPipeline_;
    const std::shared_ptr<DPISink> dpiSink_;
    const std::shared_ptr<MacroExecutor> macroExecutor_;
    ButtonPipeline buttonPipeline_;
    const std::unique_ptr<InputRouter> router_;

    // Owned by the main executor.
    Options options_;
    Config config_;
    std::optional<std::uint64_t> installedTapMask_;
    std::shared_ptr<ProfileWatcher> profileWatcher_;
    EngineStatus status_;
    std::function<void(const EngineStatus&)> onStatusChange_;
    EventStream<EngineStatus> statusChanges_;
    /// Last, so that it goes first: its thread calls into the router.
    std::unique_ptr<EventTapController> tapController_;
};

}  // namespace tessara
