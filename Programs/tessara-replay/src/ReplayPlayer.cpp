#include "TessaraReplay/ReplayPlayer.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "EngineWiring/SimulatedHost.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "TessaraCore/Config.h"
#include "TessaraCore/Overloaded.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/MacroSideEffects.h"
#include "TessaraEngine/TessaraEngine.h"
#include "TessaraReplay/FrameAssembler.h"

namespace tessara {
namespace {

/// Takes down what the program asks to be posted and done. The postings go on to the desktop; the
/// side effects end here, where there is no mouse to set and nothing to launch.
class WatchedOutput final : public EventPosting, public MacroSideEffects {
  public:
    using Record = std::function<void(ReplayRecord)>;

    WatchedOutput(const Clock& clock, EventServices& services, Record record)
        : clock_(clock), sink_(services, CGEventTapLocation::session), record_(std::move(record)) {}

    void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                        ModifierFlags modifiers) override {
        record(PostedScroll{
            .axis = axis, .pixels = pixelDelta, .phase = phase, .modifiers = modifiers});
        sink_.postScrollStep(axis, pixelDelta, phase, modifiers);
    }
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) override {
        record(PostedKey{.code = code, .isDown = isDown, .modifiers = modifiers});
        sink_.postKey(code, isDown, modifiers);
    }
    void postMouseButton(std::int64_t number, bool isDown) override {
        record(PostedButton{.number = number, .isDown = isDown});
        sink_.postMouseButton(number, isDown);
    }

    void requestDPI(std::int64_t dpi) override { record(RequestedDPI{.dpi = dpi}); }
    void launchApp(const std::string& bundleID) override {
        record(LaunchedApp{.bundleID = bundleID});
    }
    void runShortcut(const std::string& name) override { record(RanShortcut{.name = name}); }

  private:
    template <typename What>
    void record(What what) {
        record_({.at = clock_.now(), .what = std::move(what)});
    }

    const Clock& clock_;
    CGEventPoster sink_;
    const Record record_;
};

std::int64_t deltaX(const CGEvent& event) {
    return event.integerValue(CGEventField::mouseEventDeltaX);
}
std::int64_t deltaY(const CGEvent& event) {
    return event.integerValue(CGEventField::mouseEventDeltaY);
}

class Player {
  public:
    Player(const ReplaySetting& setting, const ReplayListener& listener)
        : listener_(listener),
          dispatcher_(replayStart),
          host_(dispatcher_),
          application_(host_.desktop.workspace().install({.bundleID = setting.frontmostBundleID,
                                                          .displayName = "Application",
                                                          .location = {}})),
          mouse_(host_.desktop.attachTargetMouse()),
          output_(std::make_shared<WatchedOutput>(
              dispatcher_.clock(), host_.desktop.eventServices(),
              [this](ReplayRecord record) { take(std::move(record)); })),
          engine_(
              std::make_shared<TessaraEngine>(setting.config, options(), host_.enginePlatform())) {
        mouse_.setAcceleration(1);
        host_.desktop.workspace().bringToFront(application_);
        // The simulated desktop never refuses a tap that nobody told it to refuse.
        static_cast<void>(engine_->start());
        dispatcher_.runReady();
        host_.desktop.events().takeJournal();
    }

    void handOn(const ReplayInput& input) {
        runTo(input.at);
        heldBack_.emplace();
        std::visit([this](const auto& what) { act(what); }, input.what);
        dispatcher_.runReady();
        const auto caused = std::exchange(heldBack_, std::nullopt);

        const auto journal = host_.desktop.events().takeJournal();
        std::visit([&](const auto& what) { recordInput(what, journal); }, input.what);
        for (const ReplayRecord& record : *caused)
            listener_(record);
        recordReceived();
    }

    void runOn(TimePoint lastEvent) {
        runTo(lastEvent);
        const TimePoint limit = lastEvent + replayPatience;
        for (auto next = dispatcher_.nextDeadline(); next; next = dispatcher_.nextDeadline()) {
            if (*next > limit) {
                runTo(limit);
                return;
            }
            runTo(*next);
        }
    }

    void letGo() {
        record(FinalReset{});
        engine_->stop();
        dispatcher_.runReady();
        recordReceived();
        dispatcher_.discard();
    }

  private:
    TessaraEngine::Options options() {
        TessaraEngine::Options options;
        options.deviceMatches = {HIDPPDeviceMatch::g502X};
        options.poster = output_;
        options.sideEffects = output_;
        return options;
    }

    /// Runs what is due up to `moment`, and takes down what the application received at its time.
    void runTo(TimePoint moment) {
        for (auto next = dispatcher_.nextDeadline(); next && *next <= moment;
             next = dispatcher_.nextDeadline()) {
            dispatcher_.advanceTo(std::max(*next, dispatcher_.now()));
            recordReceived();
        }
        dispatcher_.advanceTo(moment);
        host_.desktop.events().takeJournal();
    }

    void act(const WheelTurn& turn) {
        if (turn.axis == ScrollAxis::vertical) {
            mouse_.spin(turn.lines);
        } else {
            mouse_.spinSideways(turn.lines);
        }
    }
    void act(const ButtonChange& change) {
        if (change.isDown) {
            mouse_.press(change.number);
        } else {
            mouse_.release(change.number);
        }
    }
    void act(const MouseMotion& motion) {
        mouse_.move(static_cast<double>(motion.dx), static_cast<double>(motion.dy));
    }
    void act(const ModifierKeyChange& change) {
        if (change.isDown) {
            host_.desktop.keyboard().press(change.code);
        } else {
            host_.desktop.keyboard().release(change.code);
        }
    }

    using Journal = std::vector<SimulatedPassage>;

    // The input's own passage is the first; what it caused came after it.

    void recordInput(const WheelTurn& turn, const Journal& journal) {
        record(HandledWheel{.turn = turn, .passes = journal.front().delivered.has_value()});
    }
    void recordInput(const ButtonChange& change, const Journal& journal) {
        record(HandledButton{.change = change, .passes = journal.front().delivered.has_value()});
    }
    void recordInput(const MouseMotion& motion, const Journal& journal) {
        const CGEvent& entered = journal.front().entered;
        const CGEvent& delivered = journal.front().delivered.value();
        const bool isRewritten =
            deltaX(delivered) != deltaX(entered) || deltaY(delivered) != deltaY(entered);
        record(HandledMotion{
            .motion = motion,
            .out = isRewritten ? MouseMotion{.dx = deltaX(delivered), .dy = deltaY(delivered)}
                               : motion});
    }
    void recordInput(const ModifierKeyChange&, const Journal&) {}

    void recordReceived() {
        for (const CGEvent& event : application_.takeReceived())
            record(ReceivedEvent{.event = event});
    }

    template <typename What>
    void record(What what) {
        take({.at = dispatcher_.now(), .what = std::move(what)});
    }

    /// What an input causes at once is held back until the input itself has been told.
    void take(ReplayRecord record) {
        if (heldBack_) {
            heldBack_->push_back(std::move(record));
        } else {
            listener_(record);
        }
    }

    const ReplayListener& listener_;
    std::optional<std::vector<ReplayRecord>> heldBack_;
    ManualDispatcher dispatcher_;
    SimulatedHost host_;
    SimulatedApplication& application_;
    SimulatedPointingDevice& mouse_;
    const std::shared_ptr<WatchedOutput> output_;
    const std::shared_ptr<TessaraEngine> engine_;
};

}  // namespace

void play(const ReplayInputs& inputs, const ReplaySetting& setting,
          const ReplayListener& listener) {
    Player player(setting, listener);
    for (const ReplayInput& input : inputs.inputs)
        player.handOn(input);
    player.runOn(inputs.end);
    player.letGo();
}

}  // namespace tessara
