#include "TessaraEngine/RecordingSideEffects.h"

#include <utility>

namespace tessara {

void RecordingSideEffects::requestDPI(std::int64_t dpi) {
    record(DPIRequest{.dpi = dpi});
}

void RecordingSideEffects::launchApp(const std::string& bundleID) {
    record(AppLaunch{.bundleID = bundleID});
}

void RecordingSideEffects::runShortcut(const std::string& name) {
    record(ShortcutRun{.name = name});
}

std::vector<SideEffect> RecordingSideEffects::effects() const {
    MutexLock lock(mutex_);
    return effects_;
}

void RecordingSideEffects::reset() {
    MutexLock lock(mutex_);
    effects_.clear();
}

void RecordingSideEffects::record(SideEffect effect) {
    MutexLock lock(mutex_);
    effects_.push_back(std::move(effect));
}

}  // namespace tessara
