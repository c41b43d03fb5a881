#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "Support/GestureChecker.h"
#include "TessaraEngine/EventPosting.h"

namespace tessara {

/// The way out, with an eye on the gestures: the event of an end does not say of which axis it is.
class WatchedPoster final : public EventPosting {
  public:
    WatchedPoster(std::shared_ptr<EventPosting> sink, testing::GestureChecker& gestures)
        : sink_(std::move(sink)), gestures_(gestures) {}

    void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                        ModifierFlags modifiers) override {
        gestures_.step(axis, pixelDelta, phase);
        sink_->postScrollStep(axis, pixelDelta, phase, modifiers);
    }
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) override {
        sink_->postKey(code, isDown, modifiers);
    }
    void postMouseButton(std::int64_t number, bool isDown) override {
        sink_->postMouseButton(number, isDown);
    }

  private:
    const std::shared_ptr<EventPosting> sink_;
    testing::GestureChecker& gestures_;
};

}  // namespace tessara
