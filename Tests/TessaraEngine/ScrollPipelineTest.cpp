#include <optional>
#include <random>

#include <gmock/gmock.h>

#include "EngineTest.h"
#include "Support/GestureChecker.h"
#include "TessaraEngine/ScrollPipeline.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

ScrollSettings withoutAcceleration() {
    ScrollSettings settings;
    settings.accelerationEnabled = false;
    return settings;
}

class ScrollPipelineTest : public EngineTest {
  protected:
    /// One event of the wheel at the present moment; what it causes at once is run.
    ScrollDisposition wheel(std::int64_t lines, ScrollAxis axis = ScrollAxis::vertical,
                            ModifierFlags modifiers = {}) {
        const ScrollDisposition disposition = pipeline->handle({.lineDelta = lines,
                                                                .axis = axis,
                                                                .modifiers = modifiers,
                                                                .timestampMillis = nowMillis(),
                                                                .deviceID = {}});
        dispatcher.runReady();
        return disposition;
    }

    void playToTheEnd() { ASSERT_TRUE(dispatcher.runUntilIdle(dispatcher.now() + 60s)); }

    /// The sum of what was posted on an axis; checks the phases of all of it.
    std::int64_t pixelsPosted(ScrollAxis axis = ScrollAxis::vertical) {
        testing::GestureChecker checker;
        std::int64_t pixels = 0;
        for (const Emission& emission : poster->emissions()) {
            const auto& step = std::get<ScrollEmission>(emission);
            checker.step(step.axis, step.pixelDelta, step.phase);
            if (step.axis == axis) pixels += step.pixelDelta;
        }
        EXPECT_THAT(checker.faults(), IsEmpty());
        EXPECT_THAT(checker.openAxes(), IsEmpty());
        return pixels;
    }

    std::optional<ScrollPipeline> pipeline{std::in_place, withoutAcceleration(), poster,
                                           dispatcher};
};

TEST_F(ScrollPipelineTest, a_click_becomes_a_glide_played_step_by_step) {
    EXPECT_EQ(wheel(1), ScrollDisposition::suppress);
    EXPECT_EQ(dispatcher.pendingCount(), 23U);
    dispatcher.advance(8ms - 1ns);
    EXPECT_THAT(takePosted(), IsEmpty());
    dispatcher.advance(1ns);
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical 5px began mods=0)"));
    dispatcher.advance(8ms);
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical 4px changed mods=0)"));
    dispatcher.advance(250ms - 16ms - 1ns);
    EXPECT_EQ(takePosted().size(), 20U);
    EXPECT_EQ(pipeline->inFlightPlanCount(), 1);
    dispatcher.advance(1ns);
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical 0px ended mods=0)"));
    EXPECT_EQ(pipeline->inFlightPlanCount(), 0);
    EXPECT_EQ(
        pipeline->snapshotMetrics(),
        (ScrollPipeline::Metrics{
            .inputsTransformed = 1, .plansScheduled = 1, .stepsPosted = 23, .pixelsPosted = 50}));
}

TEST_F(ScrollPipelineTest, clicks_on_a_running_glide_lose_no_pixel_and_make_one_gesture) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> gapMicros(0, 200'000);
        poster->reset();
        for (int click = 0; click < 30; ++click) {
            (void)wheel(-1);
            dispatcher.advance(std::chrono::microseconds(gapMicros(random)));
        }
        playToTheEnd();
        EXPECT_EQ(pixelsPosted(), -30 * 50);
        EXPECT_EQ(pipeline->inFlightPlanCount(), 0);
    }
    EXPECT_EQ(pipeline->snapshotMetrics().plansSuperseded, 20 * 29);
}

TEST_F(ScrollPipelineTest, a_takeover_goes_by_the_pixels_posted_and_not_by_the_clock) {
    // The second click is timed 100 ms after the first, but the queue had no time to post a step.
    for (const double late : {0.0, 100.0}) {
        (void)pipeline->handle({.lineDelta = 1, .timestampMillis = nowMillis() + late});
    }
    playToTheEnd();
    EXPECT_EQ(pixelsPosted(), 100);
    const ScrollPipeline::Metrics metrics = pipeline->snapshotMetrics();
    EXPECT_EQ(metrics.plansSuperseded, 1);
    EXPECT_EQ(metrics.stepsCancelled, 23);

    // One that comes so late that its glide has run out meanwhile carries nothing any more.
    dispatcher.advance(1s);
    (void)wheel(1);
    dispatcher.advance(300ms);
    (void)pipeline->handle({.lineDelta = 1, .timestampMillis = nowMillis() - 100});
    playToTheEnd();
    EXPECT_EQ(pipeline->snapshotMetrics().pixelsPosted, 200);
    EXPECT_EQ(pipeline->snapshotMetrics().plansSuperseded, 1);
}

TEST_F(ScrollPipelineTest, a_broken_gesture_is_closed_with_its_own_modifiers_ahead_of_the_next) {
    (void)wheel(1, ScrollAxis::vertical, ModifierFlags::shift);
    dispatcher.advance(10ms);
    takePosted();
    (void)wheel(-1);
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical 0px ended mods=2)"));
    dispatcher.advance(8ms);
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical -5px began mods=0)"));
    playToTheEnd();
    EXPECT_EQ(pipeline->snapshotMetrics().stepsCancelled, 22);
}

TEST_F(ScrollPipelineTest,
       what_the_transformer_leaves_alone_passes_and_what_comes_to_nothing_is_swallowed) {
    ScrollSettings settings = withoutAcceleration();
    settings.enabledAxes = ScrollAxes::vertical;
    pipeline->setSettings(settings);
    EXPECT_EQ(pipeline->settings(), settings);
    (void)wheel(1);
    EXPECT_EQ(wheel(1, ScrollAxis::horizontal), ScrollDisposition::passThrough);

    settings.maxInFlightPixels = 0;
    pipeline->setSettings(settings);
    EXPECT_EQ(wheel(1), ScrollDisposition::suppress);
    playToTheEnd();
    EXPECT_EQ(pixelsPosted(), 50) << "the running glide goes on as it was made";
    const ScrollPipeline::Metrics metrics = pipeline->snapshotMetrics();
    EXPECT_EQ(metrics.inputsPassedThrough, 1);
    EXPECT_EQ(metrics.inputsIgnored, 1);
    EXPECT_EQ(metrics.inputsTransformed, 1);
}

TEST_F(ScrollPipelineTest, a_reset_ends_what_is_open_and_nothing_moves_afterwards) {
    (void)wheel(1, ScrollAxis::vertical, ModifierFlags::option);
    dispatcher.advance(100ms);
    (void)wheel(1, ScrollAxis::horizontal);  // posts nothing before the reset
    const std::int64_t pending = 23 - static_cast<std::int64_t>(takePosted().size());

    pipeline->reset();
    EXPECT_THAT(takePosted(), IsEmpty()) << "not on the caller's thread";
    pipeline->drain();
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical 0px ended mods=8)"));
    EXPECT_EQ(pipeline->snapshotMetrics().stepsCancelled, pending + 23);
    EXPECT_EQ(pipeline->snapshotMetrics().gesturesForceClosed, 1);
    EXPECT_EQ(pipeline->inFlightPlanCount(), 2) << "the queued steps run down as empty work";

    pipeline->reset();
    EXPECT_EQ(pipeline->snapshotMetrics().stepsCancelled, 2 * (pending + 23));
    EXPECT_EQ(pipeline->snapshotMetrics().gesturesForceClosed, 1);
    playToTheEnd();
    EXPECT_THAT(takePosted(), IsEmpty());
    EXPECT_EQ(pipeline->inFlightPlanCount(), 0);
    pipeline->resetMetrics();
    EXPECT_EQ(pipeline->snapshotMetrics(), ScrollPipeline::Metrics{});
}

TEST_F(ScrollPipelineTest, a_pipeline_that_is_gone_posts_only_the_ends_it_owes) {
    (void)wheel(1);
    dispatcher.advance(20ms);
    takePosted();
    pipeline->reset();
    (void)pipeline->handle({.lineDelta = 1, .timestampMillis = nowMillis()});
    pipeline.reset();
    playToTheEnd();
    EXPECT_THAT(takePosted(), ElementsAre("scroll(vertical 0px ended mods=0)"));
    dispatcher.discard();
}

}  // namespace
}  // namespace tessara
