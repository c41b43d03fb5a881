#include "Platform/Simulated/SimulatedHardware.h"

#include <utility>

#include <fmt/format.h>

#include "Platform/Dispatch/Clock.h"
#include "Platform/MouseEvents.h"
#include "Platform/Simulated/SimulatedDevices.h"
#include "Platform/Simulated/SimulatedDisplays.h"
#include "Platform/Simulated/SimulatedEventStream.h"
#include "Platform/Simulated/SimulatedInputState.h"
#include "ScriptFault.h"

namespace tessara {
namespace {

void nameSender(CGEvent& event, std::uint64_t sender, SenderReporting reporting) {
    switch (reporting) {
        case SenderReporting::hidEvent:
            event.hidEventReference = sender;
            return;
        case SenderReporting::fieldOnly:
            if (isButtonOrDragEvent(event.type)) {
                event.setIntegerValue(CGEventField::mouseEventSenderID,
                                      static_cast<std::int64_t>(sender));
            }
            return;
        case SenderReporting::none:
            return;
    }
}

}  // namespace

SimulatedHardware::SimulatedHardware(const Clock& clock, std::shared_ptr<SimulatedDevices> devices,
                                     std::shared_ptr<SimulatedDisplays> displays,
                                     std::shared_ptr<SimulatedInputState> hardwareState,
                                     std::shared_ptr<SimulatedEventStream> stream)
    : clock_(clock),
      devices_(std::move(devices)),
      displays_(std::move(displays)),
      state_(std::move(hardwareState)),
      stream_(std::move(stream)) {}

void SimulatedHardware::send(const SimulatedHIDDevice& device, Completion complete) const {
    if (!device.isAttached()) {
        stopForScriptFault(fmt::format("device {:#x} acts but is not attached", device.id()));
    }
    const auto nanos = clock_.now().time_since_epoch().count();
    stream_->enterFromDevice([displays = displays_, state = state_,
                              timestamp = static_cast<std::uint64_t>(nanos), sender = device.id(),
                              reporting = devices_->senderReporting(),
                              complete = std::move(complete)]() mutable -> std::optional<CGEvent> {
        CGEvent event;
        event.flags = state->flags();
        event.location = displays->cursor();
        event.timestampNanos = timestamp;
        if (!complete(event)) return std::nullopt;
        nameSender(event, sender, reporting);
        return event;
    });
}

}  // namespace tessara
