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
/// knows of none. What the settings mean is the engine's to know, where they are kept the store's.
///
/// It lives on the main executor: everything is called there, and signals come there, from within
/// the operation that makes the change. A property that is given an equal value tells nobody.
///
/// | What | When |
/// |---|---|
/// | a changed document reaches the engine | 250 ms after the last change |
/// | and the disk | 1 s after it, and at the stop |
/// | permissions, login item and the engine's counts are read | every 2 s from the start |
///
/// No operation fails: a document that cannot be read or saved is told by `store()`, an engine that
/// cannot be started by `status().lastError`, a mouse that does not answer by `deviceMonitor()`.
class AppModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString menuBarSymbol READ menuBarSymbol NOTIFY menuBarStatusChanged)
    Q_PROPERTY(QString menuBarHeadline READ menuBarHeadline NOTIFY menuBarStatusChanged)
    Q_PROPERTY(QString menuBarDetail READ menuBarDetail NOTIFY menuBarStatusChanged)
    Q_PROPERTY(QString frontmostAppName READ frontmostAppName NOTIFY frontmostAppNameChanged)
    Q_PROPERTY(bool needsBanner READ needsBanner NOTIFY needsBannerChanged)

  public:
    /// Reads the document and the preferences, and starts nothing. A document that cannot be used
    /// is `store().problem()`; the factory's is in force then, and the file stays as it is. The
    /// services of `platform` outlive this; the structure itself is copied.
    explicit AppModel(const AppPlatform& platform);
    /// Stops first what `stop` was not called for, and saves an edit that came after it.
    ~AppModel() override;

    /// Launches: connects to the mouse, starts the engine, then the poll, then the updater. Does
    /// nothing when it runs.
    void start();

    /// The orderly end, in this order: saves the document, whether or not anything waits for it;
    /// lets the engine put back what it changed and waits for that; closes the connection, which
    /// takes some turns of the executor more. May be called again, and saves again then.
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

    /// Takes an edited document, whatever is in it: limits are applied where values are used. One
    /// that differs is saved a second after the last edit, and reaches the engine a quarter of a
    /// second after it. One that is equal does nothing.
    void setConfig(Config config);

    /// The same for an edit in place: `change` is called once, with a copy of the document.
    void editConfig(const std::function<void(Config& config)>& change);

    /// Puts `profile` in the place of the first one with its id. Dropped when there is none.
    void replaceProfile(const Profile& profile);

    /// What the engine is given: the document, or while the user pauses one with the same profiles
    /// and rules that leaves the mouse alone: no eased scrolling, no curve of our own, no buttons.
    [[nodiscard]] Config effectiveConfig() const;

    /// Hands the pause and the document to the engine without waiting for the last edit to settle,
    /// which is not handed over a second time then. Nothing without an engine.
    void applyToEngineNow();

    // A document that could not be used: the three ways out.

    /// Reads the file again. The document is the user's if that works now, and the factory's
    /// otherwise. Edits made since the failure, which were never saved, are given up.
    void retryReadingConfig();
    /// Moves the file aside and begins with the factory document, saved and in force at once.
    /// Nothing happens when the file cannot be moved; the store tells why.
    void startFreshConfig();
    /// Shows the file to the user where it lies.
    void revealConfigFile();

    // The engine.

    /// What the engine last said of itself; after the stop, what it said before. `lastError` is why
    /// the engine could not be started, where the engine knows of nothing else.
    [[nodiscard]] const EngineStatus& status() const { return status_; }
    /// What the user has granted, as last read: at construction, at the start and at each poll.
    [[nodiscard]] const PermissionState& permissions() const { return permissions_; }
    /// Null before the start and after the stop; another one after a restart.
    [[nodiscard]] const std::shared_ptr<TessaraEngine>& engine() const { return engine_; }

    /// Pauses or resumes: remembered beyond this run, and in force at once.
    void setPausedByUser(bool isPaused);

    /// Reads the permissions anew, here and in the engine, without waiting for the next poll.
    void refreshPermissions();

    /// Makes the engine anew, if Accessibility and Input Monitoring are granted, as last read, and
    /// its tap is not there. Nothing before the start and after the stop.
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
    /// Writes all of the mouse's settings again, those of the profile included: for a system that
    /// has just woken up, whose mouse may have lost them.
    void reapplyDeviceSettings();

    // Derived texts and flags, for display.

    [[nodiscard]] const MenuBarStatus& menuBarStatus() const { return menuBarStatus_; }
    /// The three parts of `menuBarStatus`, as an interface wants them.
    [[nodiscard]] QString menuBarSymbol() const;
    [[nodiscard]] QString menuBarHeadline() const;
    /// Empty when there is none.
    [[nodiscard]] QString menuBarDetail() const;
    /// The name of the application in front, or its identifier where the system knows no name;
    /// empty when no application is known to be there.
    [[nodiscard]] QString frontmostAppName() const;
    /// Whether there is something that an interface has to tell above its pages: a document that
    /// cannot be used, a missing permission, a pause.
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
