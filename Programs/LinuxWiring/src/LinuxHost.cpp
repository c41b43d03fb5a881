#include "LinuxWiring/LinuxHost.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLockFile>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <utility>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/FileUserDefaults.h"
#include "Platform/Linux/AutostartLoginItem.h"
#include "Platform/Linux/DesktopPackageOpener.h"
#include "Platform/Linux/HidrawTransport.h"
#include "Platform/Linux/LinuxDesktopShell.h"
#include "Platform/Linux/LinuxPermissionHelp.h"
#include "Platform/Linux/LinuxPermissionService.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/Linux/LinuxShortcutsRunner.h"
#include "Platform/Linux/LinuxWorkspaceService.h"
#include "Platform/Linux/PosixFileSystem.h"
#include "Platform/Linux/PosixWallClock.h"
#include "Platform/Linux/SuspendMonitor.h"
#include "Platform/Linux/XDGDirectories.h"
#include "Platform/QtDispatch/QtMainQueue.h"
#include "TessaraApp/AppModel.h"
#include "Updater/FeedUpdater.h"
#include "Updater/UpdaterBuildSettings.h"

namespace tessara {
namespace {

const HIDPPDeviceMatch& target = HIDPPDeviceMatch::g502X;

std::vector<InputDeviceMatch> targetMice() {
    return {{.vendor = static_cast<std::uint16_t>(target.vendorID),
             .product = static_cast<std::uint16_t>(target.productID)}};
}

FeedUpdater::Settings updaterSettings(const XDGDirectories& directories) {
    auto built = UpdaterBuildSettings::ofThisCopy();
    return {.current = std::move(built.current),
            .feedURL = std::move(built.feedURL),
            .publicKey = std::move(built.publicKey),
            .downloadFolder = directories.cache() + "/updates"};
}

/// Two copies would take the mouse, the user's edits and downloads from one another. Null when
/// there is one already. A folder where nothing can be locked is no reason not to run.
std::unique_ptr<QLockFile> claimUser(const XDGDirectories& directories) {
    const std::string folder = directories.runtime().value_or(directories.state());
    static_cast<void>(PosixFileSystem().createFolders(folder));
    auto lock = std::make_unique<QLockFile>(QString::fromStdString(folder + "/lock"));
    lock->setStaleLockTime(0);
    const bool isOurs = lock->tryLock() || lock->error() != QLockFile::LockFailedError;
    return isOurs ? std::move(lock) : nullptr;
}

}  // namespace

/// In the order in which they need each other.
struct LinuxHost::Services {
    Services(const XDGDirectories& directories, LinuxWorkspaceService::Displays displays,
             std::unique_ptr<QLockFile> userClaim)
        : supportDirectory(directories.data()),
          claim(std::move(userClaim)),
          defaults(files, wallClock, directories.config() + "/preferences.json"),
          loginItem(files, AutostartLoginItem::Places::standard(directories)),
          updater(updaterSettings(directories), mainQueue, wallClock, defaults, packageOpener),
          workspace(dispatcher, std::move(displays)),
          shortcuts(directories.data() + "/shortcuts", shortcutsQueue) {}

    const std::string supportDirectory;
    const std::unique_ptr<QLockFile> claim;
    ThreadedDispatcher dispatcher;
    const std::shared_ptr<DispatchQueue> mainQueue =
        std::make_shared<QtMainQueue>("ai.tessara.main");
    /// Of the ordinary class, which programs that are started inherit.
    const std::shared_ptr<DispatchQueue> shortcutsQueue =
        dispatcher.makeQueue("ai.tessara.shortcuts", QualityOfService::standard);
    PosixFileSystem files;
    PosixWallClock wallClock;
    FileUserDefaults defaults;
    AutostartLoginItem loginItem;
    DesktopPackageOpener packageOpener;
    FeedUpdater updater;
    LinuxWorkspaceService workspace;
    LinuxShortcutsRunner shortcuts;
    LinuxDesktopShell shell;
    LinuxPermissionService permissions{targetMice()};
    LinuxPermissionHelp permissionHelp{permissions,
                                       LinuxPermissionHelp::findGrantProgram(
                                           QCoreApplication::applicationDirPath().toStdString())};
    HidrawTransport hidTransport{target.vendorID, target.productID};
    LinuxPlatform platform{dispatcher, targetMice()};
    const std::shared_ptr<const HIDPPRunLoop> hidRunLoop =
        std::make_shared<HIDPPRunLoop>(dispatcher, hidTransport);
    EventSubscription wakings;

    ~Services() { awaitLooseEnds(); }

    /// An application that has gone leaves two things behind. The closing of its connection to the
    /// mouse takes some turns of the main executor. And what it released on the virtual devices has
    /// to be read while they are there: with a node the kernel drops what nobody has read of it.
    /// Desktops let go of what a vanished device held, but not every reader is a desktop.
    void awaitLooseEnds() const {
        constexpr std::chrono::seconds patience{2};
        constexpr std::chrono::milliseconds readersTime{200};
        constexpr std::chrono::milliseconds turn{5};
        const TimePoint begin = dispatcher.clock().now();
        const auto hasLasted = [&](auto duration) {
            return dispatcher.clock().now() - begin >= duration;
        };
        QTimer turns;  // so that waiting for an event ends
        turns.start(turn);
        while (!hasLasted(readersTime) || (hidRunLoop.use_count() > 1 && !hasLasted(patience)))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
};

std::expected<std::unique_ptr<LinuxHost>, std::string> LinuxHost::make() {
    // Both read the environment, which has no lock: ahead of all threads.
    auto directories = XDGDirectories::current();
    if (!directories) return std::unexpected(std::move(directories.error()));
    auto displays = LinuxWorkspaceService::Displays::current();
    auto claim = claimUser(*directories);
    if (!claim) return std::unexpected("another copy of Tessara is running for this user");
    return std::unique_ptr<LinuxHost>(new LinuxHost(
        std::make_unique<Services>(*directories, std::move(displays), std::move(claim))));
}

LinuxHost::LinuxHost(std::unique_ptr<Services> services) : services_(std::move(services)) {}

LinuxHost::~LinuxHost() = default;

AppPlatform LinuxHost::appPlatform() {
    Services& s = *services_;
    return {.engine = {.dispatcher = s.dispatcher,
                       .mainQueue = s.mainQueue,
                       .eventTaps = s.platform.eventTaps(),
                       .events = s.platform.events(),
                       .cursor = nullptr,
                       .hidEvents = s.platform.hidEvents(),
                       .hidRunLoop = s.hidRunLoop,
                       .permissions = s.permissions,
                       .workspace = s.workspace,
                       .shortcuts = s.shortcuts},
            .files = s.files,
            .defaults = s.defaults,
            .wallClock = s.wallClock,
            .loginItem = s.loginItem,
            .updater = s.updater,
            .shell = s.shell,
            .supportDirectory = s.supportDirectory,
            .version = UpdaterBuildSettings::ofThisCopy().current,
            .activateApplication = {},
            .systemManagesWheel = [&s] { return s.platform.kernelManagesWheel(); }};
}

PermissionHelp& LinuxHost::permissionHelp() {
    return services_->permissionHelp;
}

void LinuxHost::reapplySettingsOnWaking(AppModel& model) {
    services_->wakings = services_->platform.suspend().wakings().subscribe(
        services_->mainQueue, [model = QPointer(&model)](std::chrono::nanoseconds) {
            if (model) model->reapplyDeviceSettings();
        });
}

std::vector<std::string> LinuxHost::missingRights() const {
    const LinuxPermissionReport report = services_->permissions.report();
    std::vector<std::string> sentences = report.problems();
    std::ranges::move(report.limitations(), std::back_inserter(sentences));
    return sentences;
}

std::optional<std::string> LinuxHost::preferencesProblem() const {
    return services_->defaults.problem();
}

}  // namespace tessara
