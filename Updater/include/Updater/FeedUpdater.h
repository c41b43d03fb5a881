#pragma once

#include <chrono>
#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "Platform/UpdaterService.h"
#include "Updater/UpdateFeed.h"
#include "Updater/UpdateSignature.h"
#include "Updater/UpdateTransport.h"

class QByteArray;
class QFile;

namespace tessara {

class BoundedDownload;
class DispatchQueue;
class DispatchTimer;
class PackageOpener;
class UserDefaults;
class WallClock;

/// The real updater: reads a feed once a day, downloads a newer release when the user wants it,
/// verifies it, and hands the package to the system's installer when the user wants that too. It
/// replaces no file of the program's own, and knows nothing of how packages are installed. How
/// releases are made and signed is told in docs/updates.md.
///
/// - The day is counted by the time of day since the last check, across relaunches and the
///   computer's sleep. A last check that lies ahead is a clock put right since, and a check is due.
/// - A feed that cannot be read is tried again an hour later.
/// - What the user has not yet answered is not checked anew on schedule, and what they have
///   answered is not asked again within a day.
/// - A package is verified when it has come and again before it is handed on; one that does not
///   verify is deleted. One that no application opens is left where it is.
class FeedUpdater final : public UpdaterService {
  public:
    struct Settings {
        /// This copy of the program. Only a greater build is an update.
        ProgramVersion current;
        /// The feed's address and the key (Base64) that releases are signed with; both empty for a
        /// copy that knows no updates. With an address and no key every check fails, and says so.
        std::string feedURL;
        std::string publicKey;
        /// The updater's own folder: an absolute path; need not exist. Whatever file is in it is
        /// deleted at the start and before each download. A link in its place is not followed, and
        /// nothing is downloaded then.
        std::string downloadFolder;
        UpdateTransport transport = UpdateTransport::secureOnly;
    };

    /// Touches neither disk nor network yet. Main executor, which is `queue` and runs Qt's event
    /// loop; everything else is called there too. The date of the last check is kept in `defaults`
    /// under "updates.lastCheck", in seconds since 1970. The services outlive this.
    FeedUpdater(Settings settings, std::shared_ptr<DispatchQueue> queue, const WallClock& wallClock,
                UserDefaults& defaults, PackageOpener& opener);
    /// Ends what is under way without a word; a file that is half there goes at the next start.
    ~FeedUpdater() override;

    void setDelegate(UpdaterDelegate* delegate) override { delegate_ = delegate; }
    void start() override;
    [[nodiscard]] bool automaticallyChecksForUpdates() const override { return isAutomatic_; }
    void setAutomaticallyChecksForUpdates(bool checks) override;
    void checkForUpdates() override;
    [[nodiscard]] bool canCheckForUpdates() const override;
    [[nodiscard]] std::optional<std::chrono::sys_seconds> lastUpdateCheckDate() const override;
    [[nodiscard]] std::optional<std::string> feedURL() const override;
    [[nodiscard]] UpdaterState state() const override { return state_; }
    void downloadUpdate() override;
    void installUpdate() override;
    void dismissUpdate() override;

  private:
    /// Sets the timer to the next look at the time of day; takes it away where no check is to come.
    void schedule();
    void lookAgainIn(std::chrono::seconds wait);
    /// Zero when a check is due.
    [[nodiscard]] std::chrono::seconds untilNextCheck() const;
    void checkOnSchedule();
    void check();
    void feedRead(const std::expected<void, std::string>& result);
    /// What the feed's newest release means for this copy.
    [[nodiscard]] std::expected<UpdaterState, std::string> judged(
        const std::expected<UpdateRelease, std::string>& release);

    /// Opens a new file for the release's package in an otherwise empty folder.
    [[nodiscard]] std::expected<void, std::string> openPackage();
    [[nodiscard]] std::expected<void, std::string> takePackageBytes(const QByteArray& bytes);
    void packageArrived(const std::expected<void, std::string>& result);
    [[nodiscard]] std::expected<void, std::string> verify() const;
    void deleteDownloads();

    void setState(UpdaterState::Case state);
    void fail(const std::string& what, const std::string& why);

    const Settings settings_;
    const std::optional<UpdatePublicKey> key_;
    const std::shared_ptr<DispatchQueue> queue_;
    const WallClock& wallClock_;
    UserDefaults& defaults_;
    PackageOpener& opener_;

    UpdaterDelegate* delegate_ = nullptr;
    UpdaterState state_;
    bool isAutomatic_ = true;
    bool hasStarted_ = false;
    /// The feed could not be read; it is tried again at the next look.
    bool hasFailed_ = false;
    std::unique_ptr<DispatchTimer> timer_;

    std::unique_ptr<BoundedDownload> download_;
    std::string feed_;
    /// What the feed offered last, if it is newer than this copy.
    std::optional<UpdateRelease> release_;
    std::unique_ptr<QFile> package_;
};

}  // namespace tessara
