#include "TessaraApp/AppModel.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <fmt/format.h>

#include "Debouncer.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/DesktopShell.h"
#include "Platform/WorkspaceService.h"
#include "TessaraApp/AppPlatform.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraApp/DeviceMonitor.h"
#include "TessaraApp/LaunchAtLogin.h"
#include "TessaraApp/UpdaterController.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/LivePointerPropertyBackend.h"
#include "TessaraEngine/PointerHardwareTuning.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds saveDelay{1};
constexpr milliseconds engineUpdateDelay{250};
constexpr seconds pollInterval{2};

PermissionState currentPermissions(const AppPlatform& platform) {
    return PermissionState::current(platform.engine.permissions,
                                    platform.engine.hidRunLoop->transport());
}

bool allowsEngine(const PermissionState& permissions) {
    return permissions.accessibility && permissions.inputMonitoring;
}

std::string inSupportDirectory(const AppPlatform& platform, std::string_view name) {
    return fmt::format("{}/{}", platform.supportDirectory, name);
}

TessaraEngine::Options engineOptions(const EnginePlatform& platform, const DeviceMonitor& monitor,
                                     bool isPausedByUser) {
    TessaraEngine::Options options;
    options.deviceMatches = {HIDPPDeviceMatch::g502X};
    options.poster = std::make_shared<CGEventPoster>(platform.events, CGEventTapLocation::session);
    // The one connection to the mouse is the monitor's; so are the settings of no profile.
    options.hidControl = monitor.control();
    options.isPausedByUser = isPausedByUser;
    return options;
}

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

}  // namespace

AppModel::AppModel(const AppPlatform& platform)
    : platform_(std::make_unique<const AppPlatform>(platform)),
      store_(std::make_unique<ConfigStore>(platform.files, platform.wallClock,
                                           inSupportDirectory(platform, ConfigStore::fileName))),
      launchAtLogin_(std::make_unique<LaunchAtLogin>(platform.loginItem)),
      preferences_(std::make_unique<AppPreferences>(platform.defaults)),
      deviceMonitor_(std::make_unique<DeviceMonitor>(
          preferences_->managesDeviceSettings(), platform.engine.hidRunLoop,
          platform.engine.mainQueue, platform.wallClock)),
      updater_(std::make_unique<UpdaterController>(platform.updater, *preferences_,
                                                   platform.version, platform.activateApplication)),
      pointerProperties_(std::make_unique<LivePointerPropertyBackend>(platform.engine.hidEvents)),
      pointerTuning_(std::make_unique<PointerHardwareTuning>(
          PointerHardwareTuning::Environment{
              .backend = *pointerProperties_,
              .defaults = platform.defaults,
              .files = platform.files,
              .wallClock = platform.wallClock,
              .capturePath = inSupportDirectory(platform, PointerHardwareTuning::captureFileName)},
          std::vector{HIDPPDeviceMatch::g502X})),
      saving_(std::make_unique<Debouncer>(platform.engine.mainQueue, saveDelay)),
      engineUpdate_(std::make_unique<Debouncer>(platform.engine.mainQueue, engineUpdateDelay)),
      config_(store_->load()),
      permissions_(currentPermissions(platform)) {
    deviceMonitor_->setIsWheelTaken(platform.systemManagesWheel);
    connect(preferences_.get(), &AppPreferences::isPausedByUserChanged, this,
            &AppModel::refreshDerived);
    connect(store_.get(), &ConfigStore::problemChanged, this, &AppModel::refreshDerived);
    refreshDerived();
}

AppModel::~AppModel() {
    if (isStarted_) {
        stop();
    } else if (saving_->isPending()) {
        // An interface that goes may still have brought an edit after the stop.
        store_->save(config_);
    }
}

void AppModel::start() {
    if (std::exchange(isStarted_, true)) return;
    setPermissions(currentPermissions(*platform_));
    launchAtLogin_->refresh();
    deviceMonitor_->setDesiredReportRateHertz(preferences_->reportRateHertz());
    deviceMonitor_->setDesiredHighResolutionWheel(preferences_->highResolutionWheel());
    deviceMonitor_->setOnDeviceEvent([this](const HIDPPEvent& event) {
        if (engine_) engine_->handleDeviceEvent(event);
    });
    deviceMonitor_->start();
    startEngine();

    DispatchQueue& mainQueue = *platform_->engine.mainQueue;
    polling_ = mainQueue.startTimer(mainQueue.clock().now() + pollInterval, pollInterval, {},
                                    [this] { poll(); });
    updater_->start();
}

void AppModel::stop() {
    isStarted_ = false;
    saving_->cancel();
    engineUpdate_->cancel();
    statusStream_.cancel();
    polling_.reset();
    // The document is on the disk before the tap goes, and the tap is gone before the connection.
    store_->save(config_);
    stopEngine();
    deviceMonitor_->stop();
}

void AppModel::startEngine() {
    if (engine_) return;
    const EnginePlatform& platform = platform_->engine;
    startError_.reset();
    setEngine(std::make_shared<TessaraEngine>(
        effectiveConfig(), engineOptions(platform, *deviceMonitor_, preferences_->isPausedByUser()),
        platform, pointerTuning_.get()));
    // The stream stands before the start, so that no status is missed.
    statusStream_ = engine_->statusStream(
        platform.mainQueue, [this](const EngineStatus& status) { receiveStatus(status); });
    if (const auto started = engine_->start(); !started) {
        startError_ = EventTapController::description(started.error());
        EngineStatus status = status_;
        status.lastError = startError_;
        setStatus(std::move(status));
    }
}

void AppModel::stopEngine() {
    if (!engine_) return;
    engine_->stop();
    setEngine(nullptr);
}

void AppModel::restartEngineIfNeeded() {
    if (!isStarted_ || !allowsEngine(permissions_)) return;
    // Asked directly: what the stream brought last may be a turn of the executor old.
    if (engine_ && engine_->status().isTapEnabled) return;
    stopEngine();
    startEngine();
}

void AppModel::poll() {
    const bool wasAllowed = allowsEngine(permissions_);
    refreshPermissions();
    launchAtLogin_->refresh();
    if (engine_) engine_->refreshMetrics();
    if (!wasAllowed && allowsEngine(permissions_)) restartEngineIfNeeded();
}

void AppModel::refreshPermissions() {
    setPermissions(currentPermissions(*platform_));
    if (engine_) engine_->refreshPermissions();
}

void AppModel::receiveStatus(EngineStatus status) {
    // The failure of a start is not part of what the engine says, and would be gone with the next
    // status that is on its way.
    if (status.isTapEnabled) startError_.reset();
    if (!status.lastError) status.lastError = startError_;
    setStatus(std::move(status));
}

void AppModel::setConfig(Config config) {
    if (config == config_) return;
    config_ = std::move(config);
    saving_->call([this] { store_->save(config_); });
    engineUpdate_->call([this] { applyToEngineNow(); });
    Q_EMIT configChanged();
}

void AppModel::editConfig(const std::function<void(Config&)>& change) {
    Config edited = config_;
    change(edited);
    setConfig(std::move(edited));
}

void AppModel::replaceProfile(const Profile& profile) {
    editConfig([&](Config& config) {
        const auto place = std::ranges::find(config.profiles, profile.id, &Profile::id);
        if (place != config.profiles.end()) *place = profile;
    });
}

Config AppModel::effectiveConfig() const {
    Config effective = config_;
    if (!preferences_->isPausedByUser()) return effective;
    for (Profile& profile : effective.profiles) {
        profile.scroll = ScrollSettings::passThrough;
        profile.pointer.isEnabled = false;
        profile.buttons.clear();
    }
    return effective;
}

void AppModel::applyToEngineNow() {
    engineUpdate_->cancel();
    if (!engine_) return;
    engine_->setPausedByUser(preferences_->isPausedByUser());
    engine_->update(effectiveConfig());
    engine_->refreshMetrics();
}

void AppModel::setPausedByUser(bool isPaused) {
    preferences_->setPausedByUser(isPaused);
    applyToEngineNow();
}

void AppModel::retryReadingConfig() {
    store_->clearProblem();
    setConfig(store_->load());
    applyToEngineNow();
}

void AppModel::startFreshConfig() {
    if (!store_->startFresh()) return;
    setConfig(Config::default_());
    store_->save(config_);
    applyToEngineNow();
}

void AppModel::revealConfigFile() {
    platform_->shell.revealFile(store_->fileURL().toLocalFile().toStdString());
}

void AppModel::setManagesDeviceSettings(bool manages) {
    preferences_->setManagesDeviceSettings(manages);
    deviceMonitor_->control()->setEnabled(manages);
    if (manages) reapplyDeviceSettings();
}

void AppModel::setReportRate(std::optional<std::int64_t> hertz) {
    preferences_->setReportRateHertz(hertz);
    deviceMonitor_->setDesiredReportRateHertz(hertz);
    deviceMonitor_->applyDesiredSettingsAndRefresh();
}

void AppModel::setHighResolutionWheel(std::optional<bool> isHighResolution) {
    preferences_->setHighResolutionWheel(isHighResolution);
    deviceMonitor_->setDesiredHighResolutionWheel(isHighResolution);
    deviceMonitor_->applyDesiredSettingsAndRefresh();
}

void AppModel::setPointerTuningEnabled(bool isEnabled) {
    if (engine_) {
        engine_->setPointerTuningEnabled(isEnabled);
    } else {
        pointerTuning_->setEnabled(isEnabled);
    }
}

void AppModel::reapplyDeviceSettings() {
    deviceMonitor_->applyDesiredSettingsAndRefresh();
    if (engine_ && engine_->settingsApplier()) engine_->settingsApplier()->applyNow();
}

void AppModel::setEngine(std::shared_ptr<TessaraEngine> engine) {
    engine_ = std::move(engine);
    Q_EMIT engineChanged();
}

void AppModel::setStatus(EngineStatus status) {
    if (status == status_) return;
    // Asking the system for a name is worth avoiding with each count that has changed.
    const bool isAppTheSame = status.frontmostBundleID == status_.frontmostBundleID;
    status_ = std::move(status);
    Q_EMIT statusChanged();
    if (!isAppTheSame) setFrontmostAppName(nameOfFrontmostApp());
    refreshDerived();
}

void AppModel::setFrontmostAppName(std::optional<std::string> name) {
    if (name == frontmostAppName_) return;
    frontmostAppName_ = std::move(name);
    Q_EMIT frontmostAppNameChanged();
}

void AppModel::setPermissions(const PermissionState& permissions) {
    if (permissions == permissions_) return;
    permissions_ = permissions;
    Q_EMIT permissionsChanged();
    refreshDerived();
}

void AppModel::refreshDerived() {
    const bool isPaused = preferences_->isPausedByUser();
    if (auto told = MenuBarStatus::of(permissions_, isPaused, status_); told != menuBarStatus_) {
        menuBarStatus_ = std::move(told);
        Q_EMIT menuBarStatusChanged();
    }
    const bool hasNews = store_->problem() || !allowsEngine(permissions_) || isPaused;
    if (hasNews != needsBanner_) {
        needsBanner_ = hasNews;
        Q_EMIT needsBannerChanged();
    }
}

std::optional<std::string> AppModel::nameOfFrontmostApp() const {
    const auto& bundleID = status_.frontmostBundleID;
    if (!bundleID) return std::nullopt;
    return platform_->engine.workspace.displayName(*bundleID).value_or(*bundleID);
}

QString AppModel::menuBarSymbol() const {
    return text(menuBarStatus_.symbol);
}

QString AppModel::menuBarHeadline() const {
    return text(menuBarStatus_.headline);
}

QString AppModel::menuBarDetail() const {
    return text(menuBarStatus_.detail.value_or(""));
}

QString AppModel::frontmostAppName() const {
    return text(frontmostAppName_.value_or(""));
}

}  // namespace tessara
