#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/TestDispatcher.h"

namespace tessara::testing {

inline constexpr std::uint64_t allEvents = ~std::uint64_t{0};

/// A desktop in virtual time with an editor in front.
class SimulatedDesktopTest : public VirtualTimeTest {
  protected:
    SimulatedDesktopTest() { desktop.workspace().bringToFront(editor); }

    /// Makes a tap on a queue of its own, enabled; null when the desktop refuses.
    std::unique_ptr<EventTap> install(const EventTapRequest& request,
                                      EventTapService::Callback callback) {
        const auto queue = dispatcher.makeQueue("test.tap", QualityOfService::userInteractive);
        std::unique_ptr<EventTap> tap;
        queue->post([&] { tap = desktop.taps().makeTap(request, queue, std::move(callback)); });
        queue->drain();
        if (tap) tap->setEnabled(true);
        return tap;
    }

    /// At the head of the session's taps, for events of every type.
    std::unique_ptr<EventTap> install(EventTapService::Callback callback) {
        return install({.eventsOfInterest = allEvents}, std::move(callback));
    }

    /// What the editor has received since the last call, once all events are through.
    std::vector<CGEvent> received() {
        desktop.settle();
        return editor.takeReceived();
    }

    SimulatedDesktop desktop{dispatcher};
    SimulatedApplication& editor = desktop.workspace().install("org.example.editor", "Editor");
};

}  // namespace tessara::testing
