#include "Platform/Simulated/SimulatedEventServices.h"

#include <utility>

#include "Platform/Dispatch/Clock.h"
#include "Platform/Simulated/SimulatedDisplays.h"
#include "Platform/Simulated/SimulatedEventStream.h"
#include "Platform/Simulated/SimulatedInputState.h"
#include "Platform/Simulated/SimulatedPermissions.h"

namespace tessara {

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
    return PlainEventServices::makeSource(state);
}

std::optional<CGEvent> SimulatedEventServices::makeBlankEvent() {
    if (events_.refuses()) return std::nullopt;
    CGEvent event;
    event.location = displays_->cursor();
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
