#pragma once

#include <memory>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/EventTaps.h"

namespace tessara {

/// One tap as the stream sees it. It outlives its `EventTap` for as long as an event is on its way
/// through; closed, it lets everything through. All operations may be called from any thread.
class SimulatedTap : public std::enable_shared_from_this<SimulatedTap> {
  public:
    SimulatedTap(const EventTapRequest& request, std::shared_ptr<DispatchQueue> queue,
                 EventTapService::Callback callback);
    ~SimulatedTap();

    [[nodiscard]] CGEventTapLocation location() const { return request_.location; }
    [[nodiscard]] bool isListenOnly() const;
    [[nodiscard]] DispatchQueue& queue() const { return *queue_; }

    /// Whether an event of that type is to be shown to the tap now.
    [[nodiscard]] bool takes(CGEventType type) const;

    /// Shows the event to the callback and answers whether it goes on; true when the tap has been
    /// disabled or closed meanwhile. On the tap's queue only.
    [[nodiscard]] bool show(CGEvent& event);

    void setEnabled(bool isEnabled);
    [[nodiscard]] bool isEnabled() const;

    /// Disables the tap and lets the callback know the reason; false when it was not enabled.
    bool disable(CGEventType reason);

    /// Ends the tap and destroys the callback, at once or when the call under way is over.
    void close();

  private:
    [[nodiscard]] std::shared_ptr<EventTapService::Callback> callback(bool onlyIfEnabled) const;

    const EventTapRequest request_;
    const std::shared_ptr<DispatchQueue> queue_;
    mutable Mutex mutex_;
    bool isEnabled_ TESSARA_GUARDED_BY(mutex_) = false;
    std::shared_ptr<EventTapService::Callback> callback_ TESSARA_GUARDED_BY(mutex_);
};

/// All taps in the order in which an event passes them. Any thread.
class SimulatedTapList {
  public:
    void insert(std::shared_ptr<SimulatedTap> tap, CGEventTapPlacement placement);
    void remove(const SimulatedTap& tap);
    [[nodiscard]] std::vector<std::shared_ptr<SimulatedTap>> from(
        CGEventTapLocation location) const;

  private:
    mutable Mutex mutex_;
    std::vector<std::shared_ptr<SimulatedTap>> taps_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
