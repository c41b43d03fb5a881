#include "Platform/Simulated/SimulatedApplication.h"

#include <utility>

namespace tessara {

SimulatedApplication::SimulatedApplication(SimulatedApplicationDescription description)
    : description_(std::move(description)) {}

const SimulatedApplicationDescription& SimulatedApplication::description() const {
    return description_;
}

bool SimulatedApplication::isRunning() const {
    return isRunning_.load();
}

void SimulatedApplication::setRunning(bool isRunning) {
    isRunning_.store(isRunning);
}

std::vector<CGEvent> SimulatedApplication::received() const {
    MutexLock lock(mutex_);
    return received_;
}

std::vector<CGEvent> SimulatedApplication::takeReceived() {
    MutexLock lock(mutex_);
    return std::exchange(received_, {});
}

void SimulatedApplication::receive(const CGEvent& event) {
    MutexLock lock(mutex_);
    received_.push_back(event);
}

}  // namespace tessara
