#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace tessara {

/// A version of the program. The build number alone decides which of two is newer.
struct ProgramVersion {
    /// As people read it: numbers with dots between them.
    std::string version;
    std::int64_t build = 0;

    bool operator==(const ProgramVersion&) const = default;
};

/// What the updater is at.
struct UpdaterState {
    /// No feed is built into this copy of the program: there is nothing to ask.
    struct NotConfigured {
        bool operator==(const NotConfigured&) const = default;
    };
    /// Nothing is under way.
    struct Idle {
        bool operator==(const Idle&) const = default;
    };
    /// The feed is being read.
    struct Checking {
        bool operator==(const Checking&) const = default;
    };
    /// The feed has nothing newer than this copy.
    struct UpToDate {
        bool operator==(const UpToDate&) const = default;
    };
    /// There is something newer; the user decides whether it is downloaded.
    struct Available {
        ProgramVersion release;
        std::uint64_t lengthInBytes = 0;
        bool operator==(const Available&) const = default;
    };
    /// The package is on its way.
    struct Downloading {
        ProgramVersion release;
        std::uint64_t lengthInBytes = 0;
        std::uint64_t receivedBytes = 0;
        bool operator==(const Downloading&) const = default;
    };
    /// The download bears the right signature; the user decides whether it is installed.
    struct Verified {
        ProgramVersion release;
        bool operator==(const Verified&) const = default;
    };
    /// The package was given to the system's own installer, which does the rest.
    struct HandedOver {
        ProgramVersion release;
        bool operator==(const HandedOver&) const = default;
    };
    /// The last check, download or hand-over failed. Nothing is left of it but a verified package
    /// that no installer took.
    struct Failed {
        /// A sentence for the user.
        std::string text;
        bool operator==(const Failed&) const = default;
    };

    using Case = std::variant<NotConfigured, Idle, Checking, UpToDate, Available, Downloading,
                              Verified, HandedOver, Failed>;

    Case value;

    /// Whether it is that case.
    template <typename T>
    [[nodiscard]] bool is() const {
        return std::holds_alternative<T>(value);
    }

    bool operator==(const UpdaterState&) const = default;
};

/// Who shows the updates of an `UpdaterService` to the user. Called on the main executor, in the
/// midst of the service's work: an operation that changes its state waits for a later turn.
class UpdaterDelegate {
  public:
    /// The state, the date of the last check or the possibility of a check has changed.
    virtual void updaterDidChange() = 0;

    /// The user is about to be asked something about an update: the application should be in front.
    virtual void updaterWillAskUser() = 0;

  protected:
    ~UpdaterDelegate() = default;
};

/// Looks for newer versions of the program, and brings them as far as the user allows. Nothing is
/// downloaded before `downloadUpdate` and nothing is installed before `installUpdate`; what does
/// not bear the right signature is never handed on.
///
/// Main executor only. No operation waits: what comes of it is told by `state`.
class UpdaterService {
  public:
    virtual ~UpdaterService() = default;

    /// Who hears of changes; null for nobody. It must outlive the service or be taken out before.
    virtual void setDelegate(UpdaterDelegate* delegate) = 0;

    /// Begins to check on schedule, as far as that is switched on. Called once.
    virtual void start() = 0;

    /// Whether the service checks on its own, once a day.
    [[nodiscard]] virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;

    /// Checks now. Does nothing unless `canCheckForUpdates`.
    virtual void checkForUpdates() = 0;

    /// False before the start, while a check or a download is under way, and with no feed.
    [[nodiscard]] virtual bool canCheckForUpdates() const = 0;

    /// When the feed was last read; nothing when it never was.
    [[nodiscard]] virtual std::optional<std::chrono::sys_seconds> lastUpdateCheckDate() const = 0;

    /// The feed's address; nothing when none is configured.
    [[nodiscard]] virtual std::optional<std::string> feedURL() const = 0;

    /// What it is at now; each change is told to the delegate.
    [[nodiscard]] virtual UpdaterState state() const = 0;

    /// The user wants what is available. Does nothing in any other state.
    virtual void downloadUpdate() = 0;

    /// The user wants what is verified installed. Does nothing in any other state.
    virtual void installUpdate() = 0;

    /// The user wants nothing of what is offered, or has read what went wrong: stops a download,
    /// deletes what was downloaded, and goes back to idle. A check that is under way goes on.
    virtual void dismissUpdate() = 0;
};

}  // namespace tessara
