#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "TessaraCore/PointerSettings.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/CGPointerCursor.h"
#include "TessaraEngine/DeviceScope.h"
#include "TessaraEngine/EventTapController.h"
#include "TessaraEngine/InputRouter.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/PointerPipeline.h"
#include "TessaraEngine/RecordingSideEffects.h"
#include "TessaraEngine/ScrollPipeline.h"

namespace tessara {

struct EventPathOptions {
    PointerSettings pointer{.isEnabled = true, .dpi = 2000, .curve = PointerCurve::linear};
    std::vector<ButtonBinding> buttons{};
    bool repositionsCursor = true;
    /// By default exactly when the cursor is repositioned, as in the product.
    std::optional<bool> movesCursor{};
};

/// The event path, whole, from the tap to the poster, on a simulated desktop in virtual time: the
/// mouse is plugged in, an application is in front, the tap is up and takes every type of event.
class EventPath {
  public:
    explicit EventPath(ManualDispatcher& manual, EventPathOptions options = {})
        : dispatcher(manual),
          desktop(manual),
          application(desktop.workspace().install("org.example.editor", "Editor")),
          mouse(desktop.attachTargetMouse()),
          scope({HIDPPDeviceMatch::g502X}, desktop.devices(), manual),
          poster(std::make_shared<CGEventPoster>(desktop.eventServices(),
                                                 CGEventTapLocation::session)),
          scroll(ScrollSettings{}, poster, manual),
          executor(std::make_shared<MacroExecutor>(poster, std::make_shared<RecordingSideEffects>(),
                                                   manual)),
          buttons(ButtonRouter(std::move(options.buttons), options.pointer.dpi), executor),
          pointer(options.pointer, options.repositionsCursor),
          router(
              scope, scroll, buttons, pointer,
              options.movesCursor.value_or(options.repositionsCursor)
                  ? std::make_unique<CGPointerCursor>(desktop.eventServices(), desktop.displays())
                  : nullptr,
              manual.clock()),
          tap({.eventsOfInterest = ~std::uint64_t{0}}, desktop.taps(), manual, nullptr,
              [this](CGEventType type, CGEvent& event) { return router.route(type, event); }) {
        desktop.workspace().bringToFront(application);
        if (!tap.start()) throw std::runtime_error("the tap did not start");
        dispatcher.runReady();
    }

    /// Does something and says what became of each event that came of it at once.
    std::vector<SimulatedPassage> passagesOf(const std::function<void()>& act) {
        desktop.events().takeJournal();
        act();
        dispatcher.runReady();
        return desktop.events().takeJournal();
    }

    /// As `passagesOf`, for an act of one event of a device; what it set off is left out.
    SimulatedPassage passageOf(const std::function<void()>& act) {
        auto passages = passagesOf(act);
        return passages.empty() ? SimulatedPassage{} : std::move(passages.front());
    }

    /// What the application has been given since the last call, glides played to their end.
    std::vector<CGEvent> takeReceived() {
        dispatcher.runUntilIdle(dispatcher.now() + std::chrono::minutes(1));
        return application.takeReceived();
    }

    ManualDispatcher& dispatcher;
    SimulatedDesktop desktop;
    SimulatedApplication& application;
    SimulatedPointingDevice& mouse;
    DeviceScope scope;
    const std::shared_ptr<CGEventPoster> poster;
    ScrollPipeline scroll;
    const std::shared_ptr<MacroExecutor> executor;
    ButtonPipeline buttons;
    PointerPipeline pointer;
    InputRouter router;
    EventTapController tap;
};

}  // namespace tessara
