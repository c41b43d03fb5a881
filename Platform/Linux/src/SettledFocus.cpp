#include "Platform/Linux/SettledFocus.h"

#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

SettledFocus::SettledFocus(DispatchQueue& queue, Handler handler)
    : queue_(queue), handler_(std::move(handler)) {}

SettledFocus::~SettledFocus() = default;

void SettledFocus::see(std::optional<std::string> applicationID) {
    if (applicationID) {
        untilNone_.reset();
        settle(std::move(applicationID));
    } else if (settled_ && !untilNone_) {
        // Fires once: it is cancelled from within.
        untilNone_ = queue_.startTimer(queue_.clock().now() + settlingTime, settlingTime,
                                       std::chrono::nanoseconds(0), [this] {
                                           untilNone_->cancel();
                                           untilNone_.reset();
                                           settle(std::nullopt);
                                       });
    }
}

void SettledFocus::settle(std::optional<std::string> applicationID) {
    if (applicationID == settled_) return;
    settled_ = std::move(applicationID);
    handler_(settled_);
}

}  // namespace tessara
