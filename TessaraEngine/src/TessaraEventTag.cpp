#include "TessaraEngine/TessaraEventTag.h"

#include "Platform/CGEvent.h"
#include "Platform/EventServices.h"

namespace tessara {

std::unique_ptr<EventSource> TessaraEventTag::makeSource(EventServices& services) {
    constexpr std::uint32_t permitMouseKeyboardAndSystemEvents = 7;
    constexpr std::uint32_t duringSuppressionInterval = 0;

    std::unique_ptr<EventSource> source = services.makeSource(EventSourceState::privateState);
    if (!source) return nullptr;
    source->setUserData(value);
    source->setLocalEventsFilterDuringSuppressionState(permitMouseKeyboardAndSystemEvents,
                                                       duringSuppressionInterval);
    return source;
}

bool isTessaraEmitted(const CGEvent& event) {
    return event.integerValue(CGEventField::eventSourceUserData) == TessaraEventTag::value;
}

void tagAsTessaraEmitted(CGEvent& event) {
    event.setIntegerValue(CGEventField::eventSourceUserData, TessaraEventTag::value);
}

}  // namespace tessara
