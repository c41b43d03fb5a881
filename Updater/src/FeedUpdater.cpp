#include "Updater/FeedUpdater.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "BoundedDownload.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/PackageOpener.h"
#include "Platform/UserDefaults.h"
#include "Platform/WallClock.h"
#include "TessaraCore/Precondition.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;

constexpr const char* lastCheckKey = "updates.lastCheck";

constexpr std::chrono::seconds checkInterval = 24h;
/// How often the time of day is looked at, and how soon a check that failed is made again. The
/// queue's clock stands still while the computer sleeps.
constexpr std::chrono::seconds lookInterval = 1h;
constexpr auto lookLeeway = 1min;

constexpr BoundedDownload::Limits feedLimits{
    .maximumBytes = maximumFeedSizeInBytes, .idle = 20s, .total = 60s};

BoundedDownload::Limits packageLimits(const UpdateRelease& release) {
    return {.maximumBytes = release.lengthInBytes, .idle = 60s, .total = 2h};
}

constexpr const char* couldNotCheck = "Tessara could not check for updates.";
constexpr const char* couldNotDownload = "Tessara could not download the update.";
constexpr const char* couldNotInstall = "Tessara could not hand over the update.";

/// How far the download is, in whole percent: as often as it changes, somebody is told.
std::uint64_t percent(const UpdaterState::Downloading& download) {
    return download.receivedBytes * 100 / download.lengthInBytes;
}

QUrl urlOf(const std::string& text) {
    return {QString::fromStdString(text), QUrl::StrictMode};
}

bool isLink(const QDir& folder) {
    return QFileInfo(folder.path()).isSymLink();
}

}  // namespace

FeedUpdater::FeedUpdater(Settings settings, std::shared_ptr<DispatchQueue> queue,
                         const WallClock& wallClock, UserDefaults& defaults, PackageOpener& opener)
    : settings_(std::move(settings)),
      key_(updatePublicKey(settings_.publicKey)),
      queue_(std::move(queue)),
      wallClock_(wallClock),
      defaults_(defaults),
      opener_(opener) {
    TESSARA_PRECONDITION(settings_.downloadFolder.starts_with('/'),
                         "the updater's folder is no absolute path");
    if (settings_.feedURL.empty()) {
        state_.value = UpdaterState::NotConfigured{};
    } else {
        state_.value = UpdaterState::Idle{};
    }
}

FeedUpdater::~FeedUpdater() = default;

void FeedUpdater::start() {
    if (std::exchange(hasStarted_, true) || settings_.feedURL.empty()) return;
    deleteDownloads();
    schedule();
    if (delegate_) delegate_->updaterDidChange();
}

void FeedUpdater::setAutomaticallyChecksForUpdates(bool checks) {
    isAutomatic_ = checks;
    schedule();
}

void FeedUpdater::schedule() {
    lookAgainIn(hasFailed_ ? lookInterval : std::min(untilNextCheck(), lookInterval));
}

void FeedUpdater::lookAgainIn(std::chrono::seconds wait) {
    timer_ = nullptr;
    if (!hasStarted_ || !isAutomatic_ || settings_.feedURL.empty()) return;
    timer_ = queue_->startTimer(queue_->clock().now() + wait, lookInterval, lookLeeway,
                                [this] { checkOnSchedule(); });
}

std::chrono::seconds FeedUpdater::untilNextCheck() const {
    const auto last = lastUpdateCheckDate();
    if (!last) return 0s;
    const std::chrono::seconds age = wallClock_.now() - *last;
    // A moment yet to come is a clock put right since: it says nothing.
    return age < 0s ? 0s : std::max(0s, checkInterval - age);
}

void FeedUpdater::checkOnSchedule() {
    if (!hasFailed_ && untilNextCheck() > 0s) {
        schedule();
        return;
    }
    // What waits for an answer, or is being downloaded, is not taken from under the user.
    if (state_.is<UpdaterState::Idle>() || state_.is<UpdaterState::UpToDate>() ||
        state_.is<UpdaterState::Failed>()) {
        check();
    }
}

bool FeedUpdater::canCheckForUpdates() const {
    return hasStarted_ && !state_.is<UpdaterState::NotConfigured>() &&
           !state_.is<UpdaterState::Checking>() && !state_.is<UpdaterState::Downloading>();
}

void FeedUpdater::checkForUpdates() {
    if (!canCheckForUpdates()) return;
    // A download that is there already is asked about again.
    if (state_.is<UpdaterState::Verified>()) {
        if (delegate_) delegate_->updaterWillAskUser();
        return;
    }
    check();
}

void FeedUpdater::check() {
    release_.reset();
    setState(UpdaterState::Checking{});
    const QUrl url = urlOf(settings_.feedURL);
    if (!key_) {
        feedRead(std::unexpected("This copy of Tessara has no key to verify them."));
        return;
    }
    if (!isAllowed(settings_.transport, url)) {
        feedRead(std::unexpected("The feed's address is not a secure one."));
        return;
    }
    download_ = std::make_unique<BoundedDownload>(
        queue_, url, feedLimits,
        [this](const QByteArray& bytes) -> std::expected<void, std::string> {
            feed_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
            return {};
        },
        [this](const std::expected<void, std::string>& result) { feedRead(result); });
}

void FeedUpdater::feedRead(const std::expected<void, std::string>& result) {
    download_ = nullptr;
    const std::string feed = std::exchange(feed_, {});
    const auto release = result ? readUpdateFeed(feed) : std::unexpected(result.error());
    const auto judgement = judged(release);
    hasFailed_ = !release;
    if (release) defaults_.set(lastCheckKey, wallClock_.now().time_since_epoch().count());
    schedule();
    if (!judgement) {
        fail(couldNotCheck, judgement.error());
        return;
    }
    if (judgement->is<UpdaterState::Available>()) {
        release_ = *release;
        if (delegate_) delegate_->updaterWillAskUser();
    }
    setState(judgement->value);
}

std::expected<UpdaterState, std::string> FeedUpdater::judged(
    const std::expected<UpdateRelease, std::string>& release) {
    if (!release) return std::unexpected(release.error());
    const ProgramVersion& offered = release->version;
    const ProgramVersion& current = settings_.current;
    if (offered == current) return UpdaterState{UpdaterState::UpToDate{}};
    // The two numbers must agree on the direction, and it is never backwards.
    if (offered.build <= current.build || isEarlierVersion(offered.version, current.version)) {
        return std::unexpected(
            fmt::format("The feed offers version {} (build {}), which is not newer than this one.",
                        offered.version, offered.build));
    }
    if (!isAllowed(settings_.transport, urlOf(release->url))) {
        return std::unexpected("The update's address is not a secure one.");
    }
    return UpdaterState{UpdaterState::Available{offered, release->lengthInBytes}};
}

std::optional<std::chrono::sys_seconds> FeedUpdater::lastUpdateCheckDate() const {
    // Whatever the defaults may hold: a moment that no clock shows was never.
    constexpr std::int64_t endOfTime = std::int64_t{1} << 40;
    const auto seconds = defaults_.integer(lastCheckKey);
    if (!seconds || *seconds < 0 || *seconds > endOfTime) return std::nullopt;
    return std::chrono::sys_seconds(std::chrono::seconds(*seconds));
}

std::optional<std::string> FeedUpdater::feedURL() const {
    return settings_.feedURL.empty() ? std::nullopt : std::optional(settings_.feedURL);
}

void FeedUpdater::downloadUpdate() {
    if (!state_.is<UpdaterState::Available>()) return;
    if (const auto opened = openPackage(); !opened) {
        fail(couldNotDownload, opened.error());
        return;
    }
    setState(UpdaterState::Downloading{release_->version, release_->lengthInBytes, 0});
    download_ = std::make_unique<BoundedDownload>(
        queue_, urlOf(release_->url), packageLimits(*release_),
        [this](const QByteArray& bytes) { return takePackageBytes(bytes); },
        [this](const std::expected<void, std::string>& result) { packageArrived(result); });
}

std::expected<void, std::string> FeedUpdater::openPackage() {
    deleteDownloads();
    const QDir folder(QString::fromStdString(settings_.downloadFolder));
    if (isLink(folder)) {
        return std::unexpected(
            fmt::format("“{}” is a link to another folder, which Tessara leaves "
                        "alone.",
                        settings_.downloadFolder));
    }
    folder.mkpath(QStringLiteral("."));
    package_ = std::make_unique<QFile>(folder.filePath(QString::fromStdString(release_->fileName)));
    if (!package_->open(QIODevice::WriteOnly | QIODevice::NewOnly,
                        QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        return std::unexpected(fmt::format("“{}” could not be created: {}.",
                                           package_->fileName().toStdString(),
                                           package_->errorString().toStdString()));
    }
    return {};
}

std::expected<void, std::string> FeedUpdater::takePackageBytes(const QByteArray& bytes) {
    if (package_->write(bytes) != bytes.size()) {
        return std::unexpected(fmt::format("The download could not be stored: {}.",
                                           package_->errorString().toStdString()));
    }
    auto download = std::get<UpdaterState::Downloading>(state_.value);
    const auto before = percent(download);
    download.receivedBytes += static_cast<std::uint64_t>(bytes.size());
    if (percent(download) != before) {
        setState(download);
    } else {
        state_.value = download;
    }
    return {};
}

void FeedUpdater::packageArrived(const std::expected<void, std::string>& result) {
    download_ = nullptr;
    auto verified = result;
    if (verified && !package_->flush()) {
        verified = std::unexpected(fmt::format("The download could not be stored: {}.",
                                               package_->errorString().toStdString()));
    }
    package_->close();
    if (verified) verified = verify();
    if (!verified) {
        deleteDownloads();
        fail(couldNotDownload, verified.error());
        return;
    }
    if (delegate_) delegate_->updaterWillAskUser();
    setState(UpdaterState::Verified{release_->version});
}

std::expected<void, std::string> FeedUpdater::verify() const {
    return verifyPackage(package_->fileName().toStdString(), *release_, *key_);
}

void FeedUpdater::installUpdate() {
    if (!state_.is<UpdaterState::Verified>()) return;
    // The file has lain there for as long as the user took.
    if (const auto verified = verify(); !verified) {
        deleteDownloads();
        fail(couldNotInstall, verified.error());
        return;
    }
    // What no application opens is a good package all the same, and stays where the words say.
    const auto opened = opener_.openVerifiedPackage(package_->fileName().toStdString());
    if (!opened) {
        fail(couldNotInstall, opened.error());
        return;
    }
    setState(UpdaterState::HandedOver{release_->version});
}

void FeedUpdater::dismissUpdate() {
    if (state_.is<UpdaterState::NotConfigured>() || state_.is<UpdaterState::Checking>()) return;
    download_ = nullptr;
    // What was handed over, or was to be, may still be read.
    if (state_.is<UpdaterState::Downloading>() || state_.is<UpdaterState::Verified>()) {
        deleteDownloads();
    }
    // However long the answer took, the next question is a day away.
    if (std::exchange(release_, std::nullopt)) lookAgainIn(checkInterval);
    setState(UpdaterState::Idle{});
}

void FeedUpdater::deleteDownloads() {
    package_ = nullptr;
    const QDir folder(QString::fromStdString(settings_.downloadFolder));
    // What lies at the end of a link is somebody else's.
    if (isLink(folder)) return;
    const auto files =
        folder.entryList(QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString& name : files)
        QFile::remove(folder.filePath(name));
}

void FeedUpdater::fail(const std::string& what, const std::string& why) {
    setState(UpdaterState::Failed{what + " " + why});
}

void FeedUpdater::setState(UpdaterState::Case state) {
    if (state_.value == state) return;
    state_.value = std::move(state);
    if (delegate_) delegate_->updaterDidChange();
}

}  // namespace tessara
