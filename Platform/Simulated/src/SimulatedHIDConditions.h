#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDTransport.h"
#include "Platform/Simulated/SimulatedRefusal.h"

namespace tessara {

/// Where writes wait for as long as a script holds them. Any thread.
class SimulatedWriteGate {
  public:
    void hold() {
        MutexLock lock(mutex_);
        isHeld_ = true;
    }
    void release() {
        MutexLock lock(mutex_);
        isHeld_ = false;
        changed_.notify_all();
    }

    /// Returns at once, or when the gate is released.
    void pass() {
        MutexLock lock(mutex_);
        ++waiting_;
        while (isHeld_)
            changed_.wait(mutex_);
        --waiting_;
    }

    [[nodiscard]] std::int64_t waitingCount() const {
        MutexLock lock(mutex_);
        return waiting_;
    }

  private:
    mutable Mutex mutex_;
    std::condition_variable_any changed_;
    bool isHeld_ TESSARA_GUARDED_BY(mutex_) = false;
    std::int64_t waiting_ TESSARA_GUARDED_BY(mutex_) = 0;
};

/// How the simulated system treats whoever opens an interface and writes to it. Any thread.
struct SimulatedHIDConditions {
    SimulatedRefusal opens;
    SimulatedRefusal writes;
    SimulatedWriteGate writeGate;
    std::atomic<HIDListenEventAccess> access{HIDListenEventAccess::granted};
    std::atomic<std::int64_t> openCount{0};
};

}  // namespace tessara
