#include "Platform/Simulated/SimulatedEventStream.h"

#include <atomic>
#include <utility>

#include "Platform/MouseEvents.h"
#include "Platform/Simulated/SimulatedApplication.h"
#include "Platform/Simulated/SimulatedDisplays.h"
#include "Platform/Simulated/SimulatedEventTaps.h"
#include "Platform/Simulated/SimulatedInputState.h"
#include "Platform/Simulated/SimulatedWorkspace.h"
#include "ScriptFault.h"
#include "SimulatedTap.h"

namespace tessara {

/// The event under way. Owned by the window server's queue.
struct SimulatedEventStream::Journey {
    SimulatedPassage passage;
    CGEvent event;
    std::vector<std::shared_ptr<SimulatedTap>> route;
    std::size_t next = 0;  // the first tap of the route that the event has not passed
};

/// One wait for one tap's verdict.
struct SimulatedEventStream::Wait {
    explicit Wait(std::shared_ptr<SimulatedTap> on) : tap(std::move(on)) {}

    const std::shared_ptr<SimulatedTap> tap;
    std::atomic<bool> isOver{false};  // set when the event goes on without the verdict
};

SimulatedEventStream::SimulatedEventStream(std::shared_ptr<DispatchQueue> windowServer,
                                           SimulatedEventStreamParts parts)
    : windowServer_(std::move(windowServer)), parts_(std::move(parts)) {}

SimulatedEventStream::~SimulatedEventStream() = default;

void SimulatedEventStream::enterFromDevice(Maker make) {
    enter({.make = std::move(make), .location = CGEventTapLocation::hid, .isPosted = false});
}

void SimulatedEventStream::enterPosted(const CGEvent& event, CGEventTapLocation location) {
    enter({.make = [event] { return event; }, .location = location, .isPosted = true});
}

void SimulatedEventStream::enter(Arrival arrival) {
    windowServer_->post([weak = weak_from_this(), arrival = std::move(arrival)]() mutable {
        const auto self = weak.lock();
        if (!self) return;
        self->arrivals_.push_back(std::move(arrival));
        self->pump();
    });
}

/// Leads events through, one after the other, until one has to wait or there are no more.
void SimulatedEventStream::pump() {
    while (!journey_ && !arrivals_.empty()) {
        auto arrival = std::move(arrivals_.front());
        arrivals_.pop_front();
        begin(std::move(arrival));
        if (journey_) walk();
    }
}

void SimulatedEventStream::begin(Arrival arrival) {
    const auto event = arrival.make();
    if (!event) return;
    if (arrival.location == CGEventTapLocation::hid) parts_.hardwareState->apply(*event);
    journey_ = std::make_unique<Journey>();
    journey_->passage.entered = *event;
    journey_->passage.location = arrival.location;
    journey_->passage.isPosted = arrival.isPosted;
    journey_->event = *event;
    journey_->route = parts_.taps->tapsFrom(arrival.location);
}

/// Takes the event as far as the next verdict, or to its end.
void SimulatedEventStream::walk() {
    while (journey_->next < journey_->route.size()) {
        auto tap = journey_->route[journey_->next++];
        if (!tap->takes(journey_->event.type)) continue;
        if (!tap->isListenOnly()) {
            waitFor(std::move(tap));
            return;
        }
        auto& queue = tap->queue();
        queue.post(
            [tap = std::move(tap), copy = journey_->event]() mutable { (void)tap->show(copy); });
    }
    finish(true);
}

void SimulatedEventStream::waitFor(std::shared_ptr<SimulatedTap> tap) {
    auto& queue = tap->queue();
    auto wait = std::make_shared<Wait>(std::move(tap));
    {
        MutexLock lock(mutex_);
        wait_ = wait;
    }
    queue.post([weak = weak_from_this(), wait, event = journey_->event]() mutable {
        if (wait->isOver.load()) return;
        const bool passes = wait->tap->show(event);
        if (const auto self = weak.lock()) self->resumeLater(std::move(wait), passes, event);
    });
}

void SimulatedEventStream::resumeLater(std::shared_ptr<Wait> wait, bool passes,
                                       std::optional<CGEvent> changed) {
    windowServer_->post([weak = weak_from_this(), wait = std::move(wait), passes, changed] {
        if (const auto self = weak.lock()) self->resume(*wait, passes, changed);
    });
}

void SimulatedEventStream::resume(const Wait& wait, bool passes,
                                  const std::optional<CGEvent>& changed) {
    {
        MutexLock lock(mutex_);
        if (wait_.get() != &wait) return;  // it has gone on without this verdict
        wait_.reset();
    }
    if (changed) journey_->event = *changed;
    if (passes) {
        walk();
    } else {
        finish(false);
    }
    pump();
}

void SimulatedEventStream::disableTaps(CGEventType reason) {
    for (const auto& tap : parts_.taps->tapsFrom(CGEventTapLocation::hid)) {
        if (!tap->isListenOnly() && tap->disable(reason)) releaseFrom(*tap);
    }
}

void SimulatedEventStream::releaseFrom(const SimulatedTap& tap) {
    std::shared_ptr<Wait> wait;
    {
        MutexLock lock(mutex_);
        wait = wait_;
    }
    if (!wait || wait->tap.get() != &tap) return;
    resumeLater(wait, true, std::nullopt);
    wait->isOver.store(true);
}

void SimulatedEventStream::finish(bool isThrough) {
    const auto journey = std::move(journey_);
    if (isThrough) {
        journey->passage.delivered = journey->event;
        deliver(journey->passage);
    }
    MutexLock lock(mutex_);
    journal_.push_back(journey->passage);
}

void SimulatedEventStream::deliver(SimulatedPassage& passage) {
    const CGEvent& event = *passage.delivered;
    parts_.sessionState->apply(event);
    if (event.type == CGEventType::mouseMoved || isButtonOrDragEvent(event.type)) {
        parts_.displays->moveCursor(event.location);
    }
    if (auto* application = parts_.workspace->frontmost()) {
        passage.application = application;
        application->receive(event);
    }
}

void SimulatedEventStream::settle() {
    std::shared_ptr<Wait> former;
    while (true) {
        // Asked on the window server's queue, where no event is between two states.
        std::shared_ptr<Wait> wait;
        windowServer_->post([this, &wait] {
            MutexLock lock(mutex_);
            wait = wait_;
        });
        windowServer_->drain();
        if (!wait) return;
        if (wait == former) stopForScriptFault("an event waits for a block that was discarded");
        wait->tap->queue().drain();
        former = std::move(wait);
    }
}

std::vector<SimulatedPassage> SimulatedEventStream::journal() const {
    MutexLock lock(mutex_);
    return journal_;
}

std::vector<SimulatedPassage> SimulatedEventStream::takeJournal() {
    MutexLock lock(mutex_);
    return std::exchange(journal_, {});
}

}  // namespace tessara
