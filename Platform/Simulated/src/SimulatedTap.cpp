#include "SimulatedTap.h"

#include <algorithm>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

SimulatedTap::SimulatedTap(const EventTapRequest& request, std::shared_ptr<DispatchQueue> queue,
                           EventTapService::Callback callback)
    : request_(request),
      queue_(std::move(queue)),
      callback_(std::make_shared<EventTapService::Callback>(std::move(callback))) {}

SimulatedTap::~SimulatedTap() = default;

bool SimulatedTap::isListenOnly() const {
    return request_.options == CGEventTapOptions::listenOnly;
}

bool SimulatedTap::takes(CGEventType type) const {
    const auto number = static_cast<std::uint32_t>(type);
    return number < 64 && (request_.eventsOfInterest >> number & 1U) != 0 && isEnabled();
}

bool SimulatedTap::show(CGEvent& event) {
    const auto held = callback(true);
    return !held || (*held)(event.type, event);
}

void SimulatedTap::setEnabled(bool isEnabled) {
    MutexLock lock(mutex_);
    isEnabled_ = isEnabled && callback_;
}

bool SimulatedTap::isEnabled() const {
    MutexLock lock(mutex_);
    return isEnabled_;
}

bool SimulatedTap::disable(CGEventType reason) {
    {
        MutexLock lock(mutex_);
        if (!std::exchange(isEnabled_, false)) return false;
    }
    queue_->post([self = shared_from_this(), reason] {
        CGEvent notice;
        notice.type = reason;
        if (const auto held = self->callback(false)) (*held)(reason, notice);
    });
    return true;
}

void SimulatedTap::close() {
    std::shared_ptr<EventTapService::Callback> released;  // destroyed once the lock is let go
    MutexLock lock(mutex_);
    isEnabled_ = false;
    released.swap(callback_);
}

std::shared_ptr<EventTapService::Callback> SimulatedTap::callback(bool onlyIfEnabled) const {
    MutexLock lock(mutex_);
    return onlyIfEnabled && !isEnabled_ ? nullptr : callback_;
}

void SimulatedTapList::insert(std::shared_ptr<SimulatedTap> tap, CGEventTapPlacement placement) {
    MutexLock lock(mutex_);
    const auto [head, tail] =
        std::ranges::equal_range(taps_, tap->location(), {}, &SimulatedTap::location);
    taps_.insert(placement == CGEventTapPlacement::headInsert ? head : tail, std::move(tap));
}

void SimulatedTapList::remove(const SimulatedTap& tap) {
    MutexLock lock(mutex_);
    std::erase_if(taps_, [&](const auto& held) { return held.get() == &tap; });
}

std::vector<std::shared_ptr<SimulatedTap>> SimulatedTapList::from(
    CGEventTapLocation location) const {
    MutexLock lock(mutex_);
    return {std::ranges::lower_bound(taps_, location, {}, &SimulatedTap::location), taps_.end()};
}

}  // namespace tessara
