#pragma once

#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Dispatch/EventStream.h"
#include "TessaraApp/MenuBarStatus.h"
#include "TessaraCore/Config.h"
#include "TessaraEngine/EngineStatus.h"

namespace tessara {

class AppPreferences;
class ConfigStore;
class Debouncer;
class DeviceMonitor;
class DispatchTimer;
class LaunchAtLogin;
class PointerHardwareTuning;
class PointerPropertyBackend;
class TessaraEngine;
class UpdaterController;
struct AppPlatform;

/// The one long-lived object of the application: holds the document that the user edits, the
/// preferences, the engine and the connection to the mouse, and is the only place where an edit
/// becomes a saved file and a running behaviour. Every page of an interface is a view of it; it
/// knows of none.
///
/// It lives on the main executor: everything is called there, and signals come there. A property
/// that is given an equal value tells nobody.
class AppModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString menuBarSymbol READ menuBarSymbol NOTIFY menuBarStatusChanged)
    Q_PROPERTY(QString menuBarHeadline READ menuBarHeadline NOTIFY menuBarStatusChanged)
    Q_PROPERTY(QString menuBarDetail READ menuBarDetail NOTIFY menuBarStatusChanged)
    Q_PROPERTY(QString frontmostAppName READ frontmostAppName NOTIFY frontmostAppNameChanged)
    Q_PROPERTY(bool needsBanner READ needsBanner NOTIFY needsBannerChanged)

  public:
    /// Reads the document and the preferences, and starts nothing. A document that cannot be used
    /// is `store().problem()`; the factory's is in force then, and the file stays as it is.
    explicit AppModel(const AppPlatform& platform);
    /// Stops first what `stop` was not called for.
    ~AppModel() override;

    /// Launches: connects to the mouse, starts the engine, then the poll, then the updater. Once.
    void start();

    /// The orderly end: saves the document, lets the engine put back what it changed, closes the
    /// connection. May be called again.
    void stop();

    // The parts. They live as long as the model.

    [[nodiscard]] ConfigStore& store() const { return *store_; }
    [[nodiscard]] AppPreferences& preferences() const { return *preferences_; }
    [[nodiscard]] LaunchAtLogin& launchAtLogin() const { return *launchAtLogin_; }
    [[nodiscard]] DeviceMonitor& deviceMonitor() const { return *deviceMonitor_; }
    [[nodiscard]] UpdaterController& updater() const { return *updater_; }
    /// The correction of the system's pointer figures, which belongs to no profile.
    [[nodiscard]] PointerHardwareTuning& pointerTuning() const { return *pointerTuning_; }

    // The document.

    [[nodiscard]] const Config& config() const { return config_; }

    /// Takes an edited document. One that differs is saved a second after the last edit, and
    /// reaches the engine a quarter of a second after it.
    void setConfig(Config config);

    /// The same for an edit in place: `change` is given a copy of the document.
    void editConfig(const std::function<void(Config& config)>& change);

    /// Puts `profile` in the place of the first one with its id. Dropped when there is none.
    void replaceProfile(const Profile& profile);

    /// What the engine is given: the document, or while the user pauses one with the same profiles
    /// and rules that leaves the mouse alone.
    [[nodiscard]] Config effectiveConfig() const;

    /// Hands the pause and the document to the engine without waiting for the last edit to settle.
    void applyToEngineNow();

    // A document that could not be used: the three ways out.

    /// Reads the file again. The document is the user's if that works now, and the factory's
    /// otherwise.
    void retryReadingConfig();
    /// Moves the file aside and begins with the factory document. Nothing happens when the file
    /// cannot be moved; the store tells why.
    void startFreshConfig();
    /// Shows the file to the user where it lies.
    void revealConfigFile();

    // The engine.

    /// What the engine last said of itself.
    [[nodiscard]] const EngineStatus& status() const { return status_; }
    /// What the user has granted, as last read.
    [[nodiscard]] const PermissionState& permissions() const { return permissions_; }
    /// Null before the start and after the stop.
    [[nodiscard]] const std::shared_ptr<TessaraEngine>& engine() const { return engine_; }

    /// Pauses or resumes: remembered beyond this run, and in force at once.
    void setPausedByUser(bool isPaused);

    /// Reads the permissions anew, here and in the engine, without waiting for the next poll.
    void refreshPermissions();

    /// Makes the engine anew, if all permissions are there and its tap is not.
    void restartEngineIfNeeded();

    // The settings of the mouse and of this machine. Each is remembered at once.

    /// Whether the program may write settings to the mouse at all. Opening the gate writes them;
    /// closing it writes nothing.
    void setManagesDeviceSettings(bool manages);
    /// In Hz; absent leaves the mouse's own rate alone from now on.
    void setReportRate(std::optional<std::int64_t> hertz);
    /// Absent leaves the wheel as it is from now on.
    void setHighResolutionWheel(std::optional<bool> isHighResolution);
    /// The user's switch for the correction of the system's pointer figures.
    void setPointerTuningEnabled(bool isEnabled);
    /// Writes all of the mouse's settings again: for a system that has just woken up, whose mouse
    /// may have lost them.
    void reapplyDeviceSettings();

    // Derived texts and flags, for display.

    [[nodiscard]] const MenuBarStatus& menuBarStatus() const { return menuBarStatus_; }
    [[nodiscard]] QString menuBarSymbol() const;
    [[nodiscard]] QString menuBarHeadline() const;
    /// Empty when there is none.
    [[nodiscard]] QString menuBarDetail() const;
    /// The name of the application in front, or its identifier where the system knows no name;
    /// empty when no application is known to be there.
    [[nodiscard]] QString frontmostAppName() const;
    /// Whether there is something that an interface has to tell above its pages.
    [[nodiscard]] bool needsBanner() const { return needsBanner_; }

  Q_SIGNALS:
    void configChanged();
    void statusChanged();
    void permissionsChanged();
    void engineChanged();
    void menuBarStatusChanged();
    void frontmostAppNameChanged();
    void needsBannerChanged();

  private:
    void startEngine();
    void stopEngine();
    void poll();
    void receiveStatus(EngineStatus status);
    void setStatus(EngineStatus status);
    void setEngine(std::shared_ptr<TessaraEngine> engine);
    void setPermissions(const PermissionState& permissions);
    void setFrontmostAppName(std::optional<std::string> name);
    void refreshDerived();
    [[nodiscard]] std::optional<std::string> nameOfFrontmostApp() const;

    // Constant after construction; the rest belongs to the main executor as well.
    const std::unique_ptr<const AppPlatform> platform_;
    const std::unique_ptr<ConfigStore> store_;
    const std::unique_ptr<LaunchAtLogin> launchAtLogin_;
    const std::unique_ptr<AppPreferences> preferences_;
    const std::unique_ptr<DeviceMonitor> deviceMonitor_;
    const std::unique_ptr<UpdaterController> updater_;
    const std::unique_ptr<PointerPropertyBackend> pointerProperties_;
    const std::unique_ptr<PointerHardwareTuning> pointerTuning_;
    const std::unique_ptr<Debouncer> saving_;
    const std::unique_ptr<Debouncer> engineUpdate_;

    Config config_;
    EngineStatus status_;
    PermissionState permissions_;
    std::shared_ptr<TessaraEngine> engine_;
    /// Why the engine could not be started, until it runs.
    std::optional<std::string> startError_;
    EventSubscription statusStream_;
    std::unique_ptr<DispatchTimer> polling_;
    bool isStarted_ = false;

    MenuBarStatus menuBarStatus_;
    std::optional<std::string> frontmostAppName_;
    bool needsBanner_ = false;
};

}  // namespace tessara
