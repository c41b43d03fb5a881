#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {

/// What an application of the simulated desktop is.
struct SimulatedApplicationDescription {
    /// Absent for a program without an identifier.
    std::optional<std::string> bundleID;
    /// The name shown to the user.
    std::string displayName;
    /// Where it is installed. Empty means a place made from the name.
    std::string location;
    /// False for agents and helpers without windows.
    bool isRegular = true;
};

/// An application of the simulated desktop: it keeps every event that it was given while it was in
/// front. It answers nothing and draws nothing. All operations may be called from any thread.
class SimulatedApplication {
  public:
    explicit SimulatedApplication(SimulatedApplicationDescription description);

    [[nodiscard]] const SimulatedApplicationDescription& description() const;

    // The workspace's: what an application that quits leaves behind is told there.
    [[nodiscard]] bool isRunning() const;
    void setRunning(bool isRunning);

    /// Every event that it received, whole, oldest first.
    [[nodiscard]] std::vector<CGEvent> received() const;

    /// As `received`, and forgets them.
    std::vector<CGEvent> takeReceived();

    /// Gives it an event; the event stream's.
    void receive(const CGEvent& event);

  private:
    const SimulatedApplicationDescription description_;
    std::atomic<bool> isRunning_{false};
    mutable Mutex mutex_;
    std::vector<CGEvent> received_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
