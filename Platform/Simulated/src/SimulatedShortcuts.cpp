#include "Platform/Simulated/SimulatedShortcuts.h"

namespace tessara {

std::vector<std::string> SimulatedShortcuts::ran() const {
    MutexLock lock(mutex_);
    return ran_;
}

void SimulatedShortcuts::runShortcut(const std::string& name) {
    MutexLock lock(mutex_);
    ran_.push_back(name);
}

}  // namespace tessara
