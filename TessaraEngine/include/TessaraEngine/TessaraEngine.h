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
#include "TessaraEngine/SettingsApplier.h"

namespace tessara {

class DPISink;
class EventPosting;
class HIDPPDevice;
class InputRouter;
class MacroExecutor;
class MacroSideEffects;
class PointerHardwareTuning;
class ProfileWatcher;

/// The conductor: builds everything that acts on the user's input, starts and stops the tap,
/// changes profiles, and says in one `EngineStatus` how things stand.
///
/// It also keeps the mouse's own settings in step with the active profile, and the system's pointer
/// figures in step with the mouse, where it is given the means.
///
/// Events do not pass through it. Once started they go from the tap through the router to the
/// pipelines, on the tap thread; the engine only changes what those work with, between two events.
///
/// All methods run on the main executor. Work that it schedules holds it weakly, so it is made
/// shared: `std::make_shared<TessaraEngine>(...)`. Stop it before the last holder lets go; one that
/// was not stopped still lets go of what it holds, but tells nobody and leaves the mouse connected.
class TessaraEngine : public std::enable_shared_from_this<TessaraEngine> {
  public:
    /// What the program decides, and not the user's document.
    struct Options {
        /// The mice to reshape.
        std::vector<HIDPPDeviceMatch> deviceMatches;
        /// The tap. With the default mask the engine leaves motion out while no profile needs it;
        /// another mask is taken as it stands.
        EventTapController::Configuration tap;
        /// Where everything goes that the engine makes itself.
        std::shared_ptr<EventPosting> poster;
        /// Takes what buttons set off beyond input; absent, the platform and the mouse do.
        std::shared_ptr<MacroSideEffects> sideEffects;
        /// Writes the mouse's settings for an application that owns the connection itself.
        std::shared_ptr<HIDPPControlling> hidControl;
        /// Without a control: whether the engine connects to the mouse by itself.
        bool connectsToDevice = false;
        /// Settings of the mouse that belong to no profile; absent leaves them as they are.
        std::optional<std::int64_t> reportRateHertz;
        std::optional<bool> highResolutionWheel;
        /// Whether buttons may start applications.
        bool allowsAppLaunch = true;
        /// Whether buttons may run shortcuts.
        bool allowsShortcuts = true;
        /// Whether motion is taken raw and the cursor moved by the engine; needs the platform's
        /// cursor service.
        bool repositionsCursor = true;
        /// The user has paused the program. The document that the engine is given already says so.
        bool isPausedByUser = false;
    };

    /// Builds everything; nothing runs yet but a first look at the input devices. `pointerTuning`
    /// may be absent, and outlives the engine otherwise.
    TessaraEngine(Config config, Options options, const EnginePlatform& platform,
                  PointerHardwareTuning* pointerTuning = nullptr);
    ~TessaraEngine();

    TessaraEngine(const TessaraEngine&) = delete;
    TessaraEngine& operator=(const TessaraEngine&) = delete;

    /// Starts the tap and follows the application in front; the profile for it is in force when
    /// this returns. Does nothing when it runs. With a disabled document it starts nothing and says
    /// so in the status. After a failure, which is mostly a permission that is missing, the watcher
    /// goes on, and a later start may succeed.
    [[nodiscard]] std::expected<void, EventTapController::StartError> start();

    /// Ends everything, the tap first, and returns when all keys and buttons that were held have
    /// been let go and the old pointer figures have been given back to the system. The end of a
    /// gesture is posted by its queue a moment later. Waits for what the tap thread and the macro
    /// queue have at hand. May be called again, and before any start.
    void stop();

    /// Takes a new document: starts, stops or restarts as it asks, or applies it as it runs. Either
    /// way all that the old one holds is let go first, also where the profile is the same. That the
    /// tap cannot be made is not told here; the status shows it.
    void update(Config config);

    /// The document in force.
    [[nodiscard]] const Config& currentConfig() const { return config_; }

    /// Chooses the profile for that application, and applies it in any case: what the old one holds
    /// is let go, and the new one is in force for all events from some moment on. While the engine
    /// follows the application in front that is a turn of the main executor later, and until
    /// another comes to the front.
    void activateProfile(const std::optional<std::string>& bundleID);

    /// How things stand.
    [[nodiscard]] const EngineStatus& status() const { return status_; }

    /// Called on the main executor with each status that differs from the last.
    void setOnStatusChange(std::function<void(const EngineStatus&)> onStatusChange) {
        onStatusChange_ = std::move(onStatusChange);
    }

    /// Gives the present status, and then each that differs from the last, to `listener` on
    /// `queue`.
    [[nodiscard]] EventSubscription statusStream(std::shared_ptr<DispatchQueue> queue,
                                                 EventStream<EngineStatus>::Listener listener);

    /// Brings the permissions in the status up to date, without asking the user.
    void refreshPermissions();
    /// Brings the counters in the status up to date, and what is attached. A correction of the
    /// pointer figures that the system refused is tried once more.
    void refreshMetrics();

    [[nodiscard]] bool isPausedByUser() const { return options_.isPausedByUser; }
    /// Tells of a pause, or of its end. The document decides what events meet; here it only keeps
    /// the system's pointer figures as they were.
    void setPausedByUser(bool isPaused);

    /// The user's switch for the correction of the system's pointer figures.
    void setPointerTuningEnabled(bool isEnabled);

    /// Takes an event of the mouse from an application that owns the connection.
    void handleDeviceEvent(const HIDPPEvent& event);

    /// Null before the first start, and where there is no way to the mouse's settings.
    [[nodiscard]] const std::shared_ptr<SettingsApplier>& settingsApplier() const {
        return settingsApplier_;
    }

  private:
    /// Begins with `profile`, which is the document's for no application.
    TessaraEngine(const Profile& profile, Config&& config, Options&& options,
                  const EnginePlatform& platform, PointerHardwareTuning* pointerTuning);

    [[nodiscard]] std::uint64_t requiredTapMask() const;
    void applyProfile(const Profile& profile, const std::optional<std::string>& bundleID);
    /// Gives the pipelines the settings of a profile. Tap thread, while there is one.
    void assignSettings(const Profile& profile);
    void handleTapDisabled(TapDisableReason reason);
    [[nodiscard]] std::shared_ptr<ProfileWatcher> makeWatcher();
    [[nodiscard]] std::unique_ptr<EventTapController> makeTapController(std::uint64_t mask);

    // The device side.

    void startDeviceIfNeeded();
    void connectToDevice(const DesiredDeviceSettings& desired);
    void disconnectFromDevice();
    void useApplier(std::shared_ptr<HIDPPControlling> control,
                    const DesiredDeviceSettings& desired);
    void handleOwnDeviceEvent(const HIDPPEvent& event);
    void handleHIDError(const HIDPPError& error);
    void refreshScope(const HIDPPEvent& event);
    [[nodiscard]] DesiredDeviceSettings desiredSettings(const Profile& profile) const;
    void syncPointerTuning();
    /// Runs `change` on the tuning, if there is one, and takes its status over.
    void tunePointer(const std::function<void(PointerHardwareTuning&)>& change);
    /// Runs `block` on the main executor, unless the engine is gone by then. Any thread.
    [[nodiscard]] std::function<void(std::function<void(TessaraEngine&)>)> onMain();

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
    bool isStopped_ = false;
    std::shared_ptr<SettingsApplier> settingsApplier_;
    PointerHardwareTuning* const pointerTuning_;
    std::shared_ptr<HIDPPDevice> hidDevice_;
    EventSubscription hidEvents_;
    std::optional<std::int64_t> lastDeviceReportedDPI_;
    std::optional<std::uint64_t> installedTapMask_;
    std::shared_ptr<ProfileWatcher> profileWatcher_;
    std::uint64_t watchersMade_ = 0;  // the number of the present one
    EngineStatus status_;
    std::function<void(const EngineStatus&)> onStatusChange_;
    EventStream<EngineStatus> statusChanges_;
    /// Last, so that it goes first: its thread calls into the router.
    std::unique_ptr<EventTapController> tapController_;
};

}  // namespace tessara
