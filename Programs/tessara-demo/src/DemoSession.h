#pragma once

#include <cstdint>
#include <set>

#include "DemoStage.h"

namespace tessara {

/// A short session of the program on the simulated desktop: everything that a user of the mouse
/// meets in a day, played in a few seconds and told on the terminal as it happens.
class DemoSession {
  public:
    /// Plays it. True when everything came about, nothing was left held, no foreign event was
    /// touched, and the document was saved.
    [[nodiscard]] bool play();

  private:
    void start();
    void scroll();
    void pressButtons();
    void editDocument();
    void switchProfiles();
    void shiftResolution();
    void replug();
    void useForeignDevices();
    void cutOffTap();
    void tellCounts();
    void pause();
    void revokePermission();
    void checkForUpdate();
    void quit();
    [[nodiscard]] bool audit();

    DemoStage stage_;
    std::set<std::uint64_t> foreignDevices_;
};

}  // namespace tessara
