#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Dispatch/EventStream.h"
#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/Config.h"

namespace tessara {

class DispatchQueue;
class WorkspaceService;

/// Follows the application in front and works out which profile should be active. It tells its
/// handler when that is another one, and applies nothing itself. The rules by which an application
/// gets its profile are the document's.
///
/// An application without an identifier, and no application at all, get the default profile.
/// Notifications hold the watcher weakly, so it is made shared.
class ProfileWatcher : public std::enable_shared_from_this<ProfileWatcher> {
  public:
    /// Hears of a profile that is to become active, with the application it is for and how it was
    /// chosen. Called without a lock held, by whichever thread made the choice.
    using Handler =
        std::function<void(const Profile& profile, const std::optional<std::string>& bundleID,
                           const ProfileResolution& resolution)>;

    /// Begins with the document's profile for no application. `workspace` must outlive the watcher;
    /// notifications come on `mainQueue`.
    ProfileWatcher(Config config, WorkspaceService& workspace,
                   std::shared_ptr<DispatchQueue> mainQueue, Handler handler);

    ProfileWatcher(const ProfileWatcher&) = delete;
    ProfileWatcher& operator=(const ProfileWatcher&) = delete;

    /// Begins to follow, and chooses for the application that is in front now. The handler hears of
    /// that choice when it is not the profile the watcher began with. Main executor.
    void start();

    /// No longer follows. Harmless when it did not. Main executor.
    void stop();

    /// Takes a new document and chooses again for the same application. Always reported: a profile
    /// that stays the same may have other contents. Main executor.
    void update(Config config);

    /// Chooses for an application. Reported when the profile differs in anything from the last one,
    /// or with `force`. Main executor.
    void activate(const std::optional<std::string>& bundleID, bool force);

    /// The profile last chosen. Any thread.
    [[nodiscard]] Profile currentProfile() const;
    /// The application last seen in front. Any thread.
    [[nodiscard]] std::optional<std::string> frontmostBundleID() const;

  private:
    const Handler handler_;
    WorkspaceService& workspace_;
    const std::shared_ptr<DispatchQueue> mainQueue_;

    mutable Mutex mutex_;
    Config config_ TESSARA_GUARDED_BY(mutex_);
    Profile currentProfile_ TESSARA_GUARDED_BY(mutex_);
    std::optional<std::string> frontmostBundleID_ TESSARA_GUARDED_BY(mutex_);
    EventSubscription observer_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
