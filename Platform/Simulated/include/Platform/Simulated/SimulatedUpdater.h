#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Platform/UpdaterService.h"

namespace tessara {

/// An updater without a network. What a check finds is what the script put into `offer`, and a
/// script may put it into any state. It has no schedule of its own, downloads nothing, and every
/// step of it is over when the call returns. One thread.
class SimulatedUpdater final : public UpdaterService {
  public:
    void setDelegate(UpdaterDelegate* delegate) override { delegate_ = delegate; }
    void start() override;
    [[nodiscard]] bool automaticallyChecksForUpdates() const override { return isAutomatic_; }
    void setAutomaticallyChecksForUpdates(bool checks) override { isAutomatic_ = checks; }
    void checkForUpdates() override;
    [[nodiscard]] bool canCheckForUpdates() const override;
    [[nodiscard]] std::optional<std::chrono::sys_seconds> lastUpdateCheckDate() const override {
        return lastCheck;
    }
    [[nodiscard]] std::optional<std::string> feedURL() const override { return feed; }
    [[nodiscard]] UpdaterState state() const override { return state_; }
    void downloadUpdate() override;
    void installUpdate() override;
    void dismissUpdate() override;

    /// Puts the updater into a state, and says so.
    void become(UpdaterState state);

    /// Nothing for a copy of the program that was built without one.
    std::optional<std::string> feed = "https://updates.example/tessara.xml";
    /// Set by the script alone.
    std::optional<std::chrono::sys_seconds> lastCheck;
    /// What the next check ends in.
    UpdaterState offer{UpdaterState::UpToDate{}};
    /// Whether `start` was called, and how automatic checks were switched then.
    bool hasStarted = false;
    bool wasAutomaticAtStart = false;

  private:
    UpdaterDelegate* delegate_ = nullptr;
    UpdaterState state_{UpdaterState::Idle{}};
    bool isAutomatic_ = true;
};

}  // namespace tessara
