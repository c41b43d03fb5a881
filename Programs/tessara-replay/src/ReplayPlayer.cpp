#include "TessaraReplay/ReplayPlayer.h"

#include <memory>
#include <string>
#include <utility>

#include "Platform/Dispatch/ManualDispatcher.h"
#include "TessaraCore/Overloaded.h"
#include "TessaraCore/Profile.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/EventPosting.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/MacroSideEffects.h"
#include "TessaraEngine/PointerPipeline.h"
#include "TessaraEngine/ScrollPipeline.h"
#include "TessaraReplay/FrameAssembler.h"

namespace tessara {
namespace {

constexpr DeviceID mouse{1};

/// What stands in for the world: whatever the program asks of it becomes a record.
class RecordingWorld final : public EventPosting, public MacroSideEffects {
  public:
    RecordingWorld(const Clock& clock, const ReplayListener& listener)
        : clock_(clock), listener_(listener) {}

    void postScrollStep(ScrollAxis axis, std::int64_t pixelDelta, ScrollPhase phase,
                        ModifierFlags modifiers) override {
        record(PostedScroll{
            .axis = axis, .pixels = pixelDelta, .phase = phase, .modifiers = modifiers});
    }
    void postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) override {
        record(PostedKey{.code = code, .isDown = isDown, .modifiers = modifiers});
    }
    void postMouseButton(std::int64_t number, bool isDown) override {
        record(PostedButton{.number = number, .isDown = isDown});
    }

    void requestDPI(std::int64_t dpi) override { record(RequestedDPI{.dpi = dpi}); }
    void launchApp(const std::string& bundleID) override {
        record(LaunchedApp{.bundleID = bundleID});
    }
    void runShortcut(const std::string& name) override { record(RanShortcut{.name = name}); }

    template <typename What>
    void record(What what) {
        listener_({.at = clock_.now(), .what = std::move(what)});
    }

  private:
    const Clock& clock_;
    const ReplayListener& listener_;
};

class Player {
  public:
    Player(const Profile& profile, const ReplayListener& listener)
        : dispatcher_(replayStart),
          world_(std::make_shared<RecordingWorld>(dispatcher_.clock(), listener)),
          executor_(std::make_shared<MacroExecutor>(world_, world_, dispatcher_)),
          buttons_(profile.makeRouter(), executor_),
          scroll_(profile.scroll, world_, dispatcher_),
          pointer_(profile.pointer, false) {}

    void handOn(const ReplayInput& input) {
        dispatcher_.advanceTo(input.at);
        // What the input causes waits on the queues, so its own record comes first.
        std::visit([&](const auto& what) { world_->record(handle(what, input)); }, input.what);
        dispatcher_.runReady();
    }

    void runOn(TimePoint lastEvent) {
        dispatcher_.advanceTo(lastEvent);
        const TimePoint limit = lastEvent + replayPatience;
        for (auto next = dispatcher_.nextDeadline(); next; next = dispatcher_.nextDeadline()) {
            if (*next > limit) {
                dispatcher_.advanceTo(limit);
                return;
            }
            dispatcher_.advanceTo(*next);
        }
    }

    void letGo() {
        world_->record(FinalReset{});
        buttons_.reset();
        scroll_.reset();
        pointer_.reset();
        dispatcher_.runReady();
        dispatcher_.discard();
    }

  private:
    HandledWheel handle(const WheelTurn& turn, const ReplayInput& input) {
        if (turn.lines == 0) return {.turn = turn};
        const auto disposition = scroll_.handle({.lineDelta = turn.lines,
                                                 .axis = turn.axis,
                                                 .modifiers = input.modifiers,
                                                 .timestampMillis = millisSinceStart(input.at),
                                                 .deviceID = mouse});
        return {.turn = turn, .passes = disposition == ScrollDisposition::passThrough};
    }

    HandledButton handle(const ButtonChange& change, const ReplayInput& input) {
        const auto disposition = buttons_.handle({.button = change.number,
                                                  .isDown = change.isDown,
                                                  .modifiers = input.modifiers,
                                                  .timestampMillis = millisSinceStart(input.at)});
        return {.change = change, .passes = disposition == ButtonDisposition::passThrough};
    }

    HandledMotion handle(const MouseMotion& motion, const ReplayInput& input) {
        if (motion == MouseMotion{}) return {.motion = motion, .out = motion};
        const PointerOutcome outcome = pointer_.handle(
            {.delta = {.dx = static_cast<double>(motion.dx), .dy = static_cast<double>(motion.dy)},
             .timestampMillis = millisSinceStart(input.at),
             .deviceID = mouse});
        if (outcome.disposition == PointerDisposition::passThrough)
            return {.motion = motion, .out = motion};
        return {.motion = motion, .out = {.dx = outcome.dx, .dy = outcome.dy}};
    }

    ManualDispatcher dispatcher_;
    std::shared_ptr<RecordingWorld> world_;
    std::shared_ptr<MacroExecutor> executor_;
    ButtonPipeline buttons_;
    ScrollPipeline scroll_;
    PointerPipeline pointer_;
};

}  // namespace

void play(const ReplayInputs& inputs, const Profile& profile, const ReplayListener& listener) {
    Player player(profile, listener);
    for (const ReplayInput& input : inputs.inputs)
        player.handOn(input);
    player.runOn(inputs.end);
    player.letGo();
}

}  // namespace tessara
