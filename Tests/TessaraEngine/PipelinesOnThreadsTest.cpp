#include <set>
#include <stop_token>
#include <thread>

#include <gmock/gmock.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Support/GestureChecker.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/MacroExecutor.h"
#include "TessaraEngine/RecordingEventPoster.h"
#include "TessaraEngine/RecordingSideEffects.h"
#include "TessaraEngine/ScrollPipeline.h"

namespace tessara {
namespace {

using ::testing::IsEmpty;

TEST(PipelinesOnThreads, resets_that_race_events_and_steps_leave_nothing_down) {
    const auto poster = std::make_shared<RecordingEventPoster>();
    ThreadedDispatcher dispatcher;
    const auto executor = std::make_shared<MacroExecutor>(
        poster, std::make_shared<RecordingSideEffects>(), dispatcher);
    ButtonPipeline buttons(
        ButtonRouter({{.button = 3, .action = HoldAction{.code = 1}},
                      {.button = 4,
                       .action = SequenceAction{.steps = {KeyDownStep{.code = 2}, DelayStep{0.1},
                                                          KeyDownStep{.code = 3}}}},
                      {.button = 5,
                       .action = RepeatWhileHeldAction{.step = KeyDownStep{.code = 4},
                                                       .intervalMillis = 1}}},
                     2000),
        executor);
    ScrollSettings brief;
    brief.durationMillis = 2;
    brief.frameIntervalMillis = 1;
    ScrollPipeline scroll(brief, poster, dispatcher);
    const auto reset = [&] {
        buttons.reset();
        scroll.reset();
    };

    {
        const std::jthread other([&](const std::stop_token& stop) {
            while (!stop.stop_requested())
                reset();
        });
        for (int event = 0; event < 3000; ++event) {
            const double now = millisSinceStart(dispatcher.clock().now());
            (void)buttons.handle(
                {.button = 3 + event % 3, .isDown = event % 2 == 0, .timestampMillis = now});
            (void)scroll.handle({.lineDelta = 1, .timestampMillis = now});
        }
    }
    reset();
    executor->drain();
    scroll.drain();

    std::set<std::uint16_t> keysDown;
    testing::GestureChecker gestures;
    for (const Emission& emission : poster->emissions()) {
        if (const auto* key = std::get_if<KeyEmission>(&emission)) {
            if (key->isDown) keysDown.insert(key->code);
            if (!key->isDown) keysDown.erase(key->code);
        } else if (const auto* step = std::get_if<ScrollEmission>(&emission)) {
            gestures.step(step->axis, step->pixelDelta, step->phase);
        }
    }
    EXPECT_THAT(keysDown, IsEmpty());
    EXPECT_THAT(gestures.openAxes(), IsEmpty());
    EXPECT_EQ(executor->heldKeyCount(), 0);
    EXPECT_EQ(executor->activeRepeatCount(), 0);
}

}  // namespace
}  // namespace tessara
