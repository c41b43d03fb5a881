#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"

namespace tessara {

class HIDHotplugWatch;
class HIDPPRunLoop;

/// Tells of the arrivals and departures of a mouse's interfaces. A mouse that is there already when
/// the monitor starts is announced like one that comes later.
class HIDPPHotplugMonitor : public std::enable_shared_from_this<HIDPPHotplugMonitor> {
  public:
    /// `onMatched` is called once for each hit, however many interfaces it brought; `onTerminated`
    /// with the registry id of each interface that has gone. Both on the run loop's queue.
    HIDPPHotplugMonitor(std::shared_ptr<const HIDPPRunLoop> runLoop, HIDPPDeviceMatch match,
                        std::function<void()> onMatched,
                        std::function<void(std::uint64_t registryID)> onTerminated);
    ~HIDPPHotplugMonitor();

    /// Begins to watch. Does nothing when it has begun, nor on a platform that cannot watch. On the
    /// run loop's queue.
    void start();

    /// Nothing is called after this. On the run loop's queue.
    void stop();

  private:
    // Constant after construction.
    const std::shared_ptr<const HIDPPRunLoop> runLoop_;
    const HIDPPDeviceMatch match_;
    const std::function<void()> onMatched_;
    const std::function<void(std::uint64_t registryID)> onTerminated_;

    // Owned by the run loop's queue. Present while started.
    std::unique_ptr<HIDHotplugWatch> watch_;
};

}  // namespace tessara
