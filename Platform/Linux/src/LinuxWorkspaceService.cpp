#include "Platform/Linux/LinuxWorkspaceService.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include <fmt/format.h>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/FocusSource.h"
#include "Platform/Linux/SettledFocus.h"

namespace tessara {
namespace {

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    if (!value || *value == '\0') return std::nullopt;
    return value;
}

}  // namespace

/// What is known of the session. The source and all that follows from it live on the queue; the
/// answers may be read from any thread.
class LinuxWorkspaceService::Session : public std::enable_shared_from_this<Session> {
  public:
    explicit Session(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

    // On the queue.

    void begin(const Displays& displays) {
        focus_.emplace(*queue_, [this](const auto& bundleID) { announce(bundleID); });
        std::string reason = "This session has no display of which to ask the application in front";
        if (displays.wayland) {
            if (use(makeWaylandFocusSource(*displays.wayland, queue_, handlers()), reason)) return;
        }
        if (displays.x11) {
            if (use(makeX11FocusSource(*displays.x11, queue_, handlers()), reason)) {
                if (displays.wayland) {
                    limit(
                        "This Wayland session tells which application is in front only of "
                        "those that use X11, so all others have the default profile.");
                }
                return;
            }
        }
        limit(fmt::format("{}, so the default profile is always in use.", reason));
    }

    void end() {
        source_.reset();
        focus_.reset();
    }

    void open(const std::string& location, bool activates) {
        if (const auto entry = DesktopEntries::findAt(location)) {
            const std::vector<DesktopEntry> entries = DesktopEntries::all();
            const auto isWanted = [&](const WindowIdentity& window) {
                return applicationIDOfWindow(entries, window) == entry->id;
            };
            if (activates && source_ && source_->activate(isWanted)) return;
            const auto isRunning = [&](const auto& window) { return isWanted(window.identity); };
            if (!activates && std::ranges::any_of(windows(), isRunning)) return;
        }
        DesktopEntries::launch(location);
    }

    // From any thread.

    [[nodiscard]] std::optional<std::string> frontmost() const {
        MutexLock lock(mutex_);
        return frontmost_;
    }

    [[nodiscard]] std::vector<FocusSource::Window> windows() const {
        MutexLock lock(mutex_);
        return windows_;
    }

    [[nodiscard]] std::optional<std::string> limitation() const {
        MutexLock lock(mutex_);
        return limitation_;
    }

    EventSubscription observe(std::shared_ptr<DispatchQueue> queue, ActivationListener listener) {
        return activations_.subscribe(std::move(queue), std::move(listener));
    }

  private:
    bool use(MadeFocusSource made, std::string& reason) {
        if (made) {
            source_ = *std::move(made);
        } else {
            reason = fmt::format("The application in front cannot be told: {}", made.error());
        }
        return source_ != nullptr;
    }

    FocusSource::Handlers handlers() {
        return {.onFocus = [this](const auto& window) { see(window); },
                .onWindows =
                    [this](std::vector<FocusSource::Window> windows) {
                        MutexLock lock(mutex_);
                        windows_ = std::move(windows);
                    },
                .onEnd =
                    [this](const std::string& reason) {
                        // The source is still in the midst of telling.
                        queue_->post([weakSelf = weak_from_this(), reason] {
                            if (auto self = weakSelf.lock()) self->lose(reason);
                        });
                    }};
    }

    void see(const std::optional<WindowIdentity>& window) {
        focus_->see(window ? applicationIDOfWindow(DesktopEntries::all(), *window) : std::nullopt);
    }

    void lose(const std::string& reason) {
        if (!std::exchange(source_, nullptr)) return;
        {
            MutexLock lock(mutex_);
            windows_.clear();
        }
        limit(
            fmt::format("The application in front can no longer be told: {}, so the default "
                        "profile is in use.",
                        reason));
        focus_->see(std::nullopt);
    }

    void limit(std::string sentence) {
        MutexLock lock(mutex_);
        limitation_ = std::move(sentence);
    }

    void announce(const std::optional<std::string>& bundleID) {
        MutexLock lock(mutex_);
        frontmost_ = bundleID;
        // Under the lock, so that what listeners hear last is what is in front.
        activations_.emit(bundleID);
    }

    const std::shared_ptr<DispatchQueue> queue_;
    EventStream<std::optional<std::string>> activations_;

    // Owned by the queue.
    std::optional<SettledFocus> focus_;
    std::unique_ptr<FocusSource> source_;

    mutable Mutex mutex_;
    std::optional<std::string> frontmost_ TESSARA_GUARDED_BY(mutex_);
    std::vector<FocusSource::Window> windows_ TESSARA_GUARDED_BY(mutex_);
    std::optional<std::string> limitation_ TESSARA_GUARDED_BY(mutex_);
};

LinuxWorkspaceService::Displays LinuxWorkspaceService::Displays::current() {
    return {.wayland = variable("WAYLAND_DISPLAY"), .x11 = variable("DISPLAY")};
}

LinuxWorkspaceService::LinuxWorkspaceService(Dispatcher& dispatcher, Displays displays)
    // Of the ordinary class, which applications that are started inherit.
    : queue_(dispatcher.makeQueue("ai.tessara.workspace", QualityOfService::standard)),
      session_(std::make_shared<Session>(queue_)) {
    queue_->post(
        [session = session_, displays = std::move(displays)] { session->begin(displays); });
}

LinuxWorkspaceService::~LinuxWorkspaceService() {
    // The connections are used by the queue's thread alone, to their end.
    queue_->post([session = session_] { session->end(); });
    queue_->drain();
}

std::optional<std::string> LinuxWorkspaceService::frontmostBundleID() const {
    return session_->frontmost();
}

EventSubscription LinuxWorkspaceService::observeActivations(std::shared_ptr<DispatchQueue> queue,
                                                            ActivationListener listener) {
    return session_->observe(std::move(queue), std::move(listener));
}

std::optional<std::string> LinuxWorkspaceService::locationOfApplication(
    const std::string& bundleID) const {
    auto entry = DesktopEntries::find(bundleID);
    if (!entry) return std::nullopt;
    return std::move(entry->location);
}

void LinuxWorkspaceService::openApplication(const std::string& location, bool activates) {
    queue_->post([session = session_, location, activates] { session->open(location, activates); });
}

std::vector<RunningApplication> LinuxWorkspaceService::runningApplications() const {
    const std::vector<DesktopEntry> entries = DesktopEntries::all();
    std::vector<RunningApplication> running;
    for (const FocusSource::Window& window : session_->windows()) {
        const DesktopEntry* const entry = entryOfWindow(entries, window.identity);
        auto id = applicationIDOfWindow(entries, window.identity);
        if (!id) continue;
        const auto known = std::ranges::find(running, id, &RunningApplication::bundleID);
        if (known != running.end()) {
            known->isRegular = known->isRegular || window.isRegular;
            continue;
        }
        running.push_back({.bundleID = id,
                           .displayName = entry ? entry->displayName : *id,
                           .isRegular = window.isRegular});
    }
    return running;
}

std::optional<std::string> LinuxWorkspaceService::displayName(const std::string& bundleID) const {
    auto entry = DesktopEntries::find(bundleID);
    if (!entry) return std::nullopt;
    return std::move(entry->displayName);
}

std::optional<std::string> LinuxWorkspaceService::limitation() const {
    return session_->limitation();
}

}  // namespace tessara
