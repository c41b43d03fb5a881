#include "Platform/Simulated/SimulatedEventServices.h"

#include <atomic>
#include <utility>

#include "Platform/Dispatch/Clock.h"
#include "Platform/Simulated/SimulatedDisplays.h"
#include "Platform/Simulated/SimulatedEventStream.h"
#include "Platform/Simulated/SimulatedInputState.h"
#include "Platform/Simulated/SimulatedPermissions.h"
#include "ScrollDeltas.h"

namespace tessara {
namespace {

/// A source of the simulated desktop. Nothing here ever keeps the user's own input away, so what
/// is said about suppression has no effect.
class SimulatedEventSource final : public EventSource {
  public:
    explicit SimulatedEventSource(EventSourceState state) : state_(state) {}

    [[nodiscard]] EventSourceState state() const { return state_; }
    [[nodiscard]] std::int64_t userData() const { return userData_.load(); }

    void setUserData(std::int64_t value) override { userData_.store(value); }
    void setLocalEventsFilterDuringSuppressionState(std::uint32_t, std::uint32_t) override {}
    void setLocalEventsSuppressionInterval(double) override {}

  private:
    const EventSourceState state_;
    std::atomic<std::int64_t> userData_{0};
};

}  // namespace

SimulatedEventServices::SimulatedEventServices(const Clock& clock,
                                               std::shared_ptr<SimulatedPermissions> permissions,
                                               std::shared_ptr<SimulatedDisplays> displays,
                                               std::shared_ptr<SimulatedInputState> hardwareState,
                                               std::shared_ptr<SimulatedInputState> sessionState,
                                               std::shared_ptr<SimulatedEventStream> stream)
    : clock_(clock),
      permissions_(std::move(permissions)),
      displays_(std::move(displays)),
      hardwareState_(std::move(hardwareState)),
      sessionState_(std::move(sessionState)),
      stream_(std::move(stream)) {}

void SimulatedEventServices::refuseSources(std::int64_t count) {
    sources_.refuseNext(count);
}

void SimulatedEventServices::refuseEvents(std::int64_t count) {
    events_.refuseNext(count);
}

std::unique_ptr<EventSource> SimulatedEventServices::makeSource(EventSourceState state) {
    if (sources_.refuses()) return nullptr;
    return std::make_unique<SimulatedEventSource>(state);
}

std::optional<CGEvent> SimulatedEventServices::makeEvent() {
    if (events_.refuses()) return std::nullopt;
    CGEvent event;
    event.flags = flagsState(EventSourceState::combinedSession);
    event.location = displays_->cursor();
    return event;
}

std::optional<CGEvent> SimulatedEventServices::makeFrom(const EventSource& source,
                                                        CGEventType type) {
    if (events_.refuses()) return std::nullopt;
    const auto& ours = dynamic_cast<const SimulatedEventSource&>(source);
    CGEvent event;
    event.type = type;
    event.flags = flagsState(ours.state());
    event.location = displays_->cursor();
    event.setIntegerValue(CGEventField::eventSourceUserData, ours.userData());
    return event;
}

std::optional<CGEvent> SimulatedEventServices::makeScrollWheelEvent(const EventSource& source,
                                                                    ScrollEventUnit unit,
                                                                    std::int32_t wheel1,
                                                                    std::int32_t wheel2) {
    auto event = makeFrom(source, CGEventType::scrollWheel);
    if (!event) return std::nullopt;
    if (unit == ScrollEventUnit::pixel) {
        setPixelDeltas(*event, wheel1, wheel2);
    } else {
        setLineDeltas(*event, wheel1, wheel2);
    }
    return event;
}

std::optional<CGEvent> SimulatedEventServices::makeMouseEvent(const EventSource& source,
                                                              CGEventType type, CGPoint location,
                                                              std::uint32_t button) {
    auto event = makeFrom(source, type);
    if (!event) return std::nullopt;
    event->location = location;
    event->setIntegerValue(CGEventField::mouseEventButtonNumber, button);
    return event;
}

std::optional<CGEvent> SimulatedEventServices::makeKeyboardEvent(const EventSource& source,
                                                                 std::uint16_t code, bool isDown) {
    auto event = makeFrom(source, isDown ? CGEventType::keyDown : CGEventType::keyUp);
    if (!event) return std::nullopt;
    event->setIntegerValue(CGEventField::keyboardEventKeycode, code);
    return event;
}

void SimulatedEventServices::post(const CGEvent& event, CGEventTapLocation location) {
    if (!permissions_->isProcessTrusted()) return;
    CGEvent posted = event;
    if (posted.timestampNanos == 0) {
        posted.timestampNanos = static_cast<std::uint64_t>(clock_.now().time_since_epoch().count());
    }
    stream_->enterPosted(posted, location);
}

bool SimulatedEventServices::keyState(EventSourceState state, std::uint16_t code) {
    switch (state) {
        case EventSourceState::privateState:
            return false;
        case EventSourceState::combinedSession:
            return sessionState_->isKeyDown(code);
        case EventSourceState::hidSystem:
            return hardwareState_->isKeyDown(code);
    }
    return false;
}

std::uint64_t SimulatedEventServices::flagsState(EventSourceState state) {
    switch (state) {
        case EventSourceState::privateState:
            return 0;
        case EventSourceState::combinedSession:
            return sessionState_->flags();
        case EventSourceState::hidSystem:
            return hardwareState_->flags();
    }
    return 0;
}

}  // namespace tessara
