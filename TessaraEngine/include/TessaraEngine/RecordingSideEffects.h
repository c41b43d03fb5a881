#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "TessaraEngine/MacroSideEffects.h"

namespace tessara {

/// A resolution that was asked for.
struct DPIRequest {
    /// In DPI.
    std::int64_t dpi = 0;
    bool operator==(const DPIRequest&) const = default;
};

/// An application that was to be started or brought to the front.
struct AppLaunch {
    std::string bundleID;
    bool operator==(const AppLaunch&) const = default;
};

/// A shortcut of the user's that was to be run.
struct ShortcutRun {
    std::string name;
    bool operator==(const ShortcutRun&) const = default;
};

/// One call of a `MacroSideEffects`.
using SideEffect = std::variant<DPIRequest, AppLaunch, ShortcutRun>;

/// Remembers what macros asked of the outside and does none of it.
class RecordingSideEffects final : public MacroSideEffects {
  public:
    RecordingSideEffects() = default;

    void requestDPI(std::int64_t dpi) override;
    void launchApp(const std::string& bundleID) override;
    void runShortcut(const std::string& name) override;

    /// All that was asked for since the start or the last `reset`, in order. Any thread.
    [[nodiscard]] std::vector<SideEffect> effects() const;

    /// Forgets what was recorded. Any thread.
    void reset();

  private:
    void record(SideEffect effect);

    mutable Mutex mutex_;
    std::vector<SideEffect> effects_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
