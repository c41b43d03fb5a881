#include "Platform/PlainEventServices.h"

#include <atomic>

#include "Platform/ScrollDeltas.h"

namespace tessara {
namespace {

class PlainEventSource final : public EventSource {
  public:
    explicit PlainEventSource(EventSourceState state) : state_(state) {}

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

std::unique_ptr<EventSource> PlainEventServices::makeSource(EventSourceState state) {
    return std::make_unique<PlainEventSource>(state);
}

std::optional<CGEvent> PlainEventServices::makeEvent() {
    auto event = makeBlankEvent();
    if (event) event->flags = flagsState(EventSourceState::combinedSession);
    return event;
}

std::optional<CGEvent> PlainEventServices::makeFrom(const EventSource& source, CGEventType type) {
    auto event = makeBlankEvent();
    if (!event) return std::nullopt;
    const auto& ours = dynamic_cast<const PlainEventSource&>(source);
    event->type = type;
    event->flags = flagsState(ours.state());
    event->setIntegerValue(CGEventField::eventSourceUserData, ours.userData());
    return event;
}

std::optional<CGEvent> PlainEventServices::makeScrollWheelEvent(const EventSource& source,
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

std::optional<CGEvent> PlainEventServices::makeMouseEvent(const EventSource& source,
                                                          CGEventType type, CGPoint location,
                                                          std::uint32_t button) {
    auto event = makeFrom(source, type);
    if (!event) return std::nullopt;
    event->location = location;
    event->setIntegerValue(CGEventField::mouseEventButtonNumber, button);
    return event;
}

std::optional<CGEvent> PlainEventServices::makeKeyboardEvent(const EventSource& source,
                                                             std::uint16_t code, bool isDown) {
    auto event = makeFrom(source, isDown ? CGEventType::keyDown : CGEventType::keyUp);
    if (!event) return std::nullopt;
    event->setIntegerValue(CGEventField::keyboardEventKeycode, code);
    return event;
}

}  // namespace tessara
