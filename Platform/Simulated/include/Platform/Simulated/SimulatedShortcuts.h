#pragma once

#include <string>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/WorkspaceService.h"

namespace tessara {

/// Notes which Shortcuts were run, and runs none. Any thread.
class SimulatedShortcuts final : public ShortcutsRunner {
  public:
    /// The names in the order of the calls.
    [[nodiscard]] std::vector<std::string> ran() const;

    void runShortcut(const std::string& name) override;

  private:
    mutable Mutex mutex_;
    std::vector<std::string> ran_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
