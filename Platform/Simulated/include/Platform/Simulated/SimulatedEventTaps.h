#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/EventTaps.h"
#include "Platform/Simulated/SimulatedRefusal.h"

namespace tessara {

class SimulatedPermissions;
class SimulatedTap;
class SimulatedTapList;

/// The taps of the simulated desktop, in the order in which an event passes them: by location, and
/// among those of one location as they were placed. Where events come from and go to is the matter
/// of `SimulatedEventStream`. All operations may be called from any thread,
/// but `makeTap`, which must be called on the tap's queue and stops the process elsewhere.
class SimulatedEventTaps final : public EventTapService {
  public:
    /// What is granted is asked at each making, and at each enabling.
    explicit SimulatedEventTaps(std::shared_ptr<SimulatedPermissions> permissions);
    ~SimulatedEventTaps() override;

    /// Makes the next `count` taps fail for no reason of permissions.
    void refuseTaps(std::int64_t count = SimulatedRefusal::always);

    /// What is in the way of the taps, in words for the user, until it is set to none again. It
    /// changes nothing else.
    void setLastRefusal(std::optional<std::string> words);

    /// The taps that an event entering at `location` has before it, in order.
    [[nodiscard]] std::vector<std::shared_ptr<SimulatedTap>> tapsFrom(
        CGEventTapLocation location) const;

    /// How many taps there are, disabled ones included.
    [[nodiscard]] std::size_t count() const;

    [[nodiscard]] std::unique_ptr<EventTap> makeTap(const EventTapRequest& request,
                                                    std::shared_ptr<DispatchQueue> queue,
                                                    Callback callback) override;
    [[nodiscard]] std::optional<std::string> lastRefusal() const override;

  private:
    const std::shared_ptr<SimulatedPermissions> permissions_;
    const std::shared_ptr<SimulatedTapList> list_;
    SimulatedRefusal refusal_;
    mutable Mutex mutex_;
    std::optional<std::string> lastRefusal_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
