#include <optional>

#include <gmock/gmock.h>

#include "EngineTest.h"
#include "TessaraEngine/MacroExecutor.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

KeyDownIntent down(std::uint16_t code, ModifierFlags modifiers = {}) {
    return {code, modifiers};
}
KeyUpIntent up(std::uint16_t code, ModifierFlags modifiers = {}) {
    return {code, modifiers};
}

StartRepeatIntent repeatOf(const MacroStep& step, double intervalMillis, std::int64_t id = 4) {
    return {{.id = id, .step = step, .intervalMillis = intervalMillis}};
}

class MacroExecutorTest : public EngineTest {
  protected:
    /// Plays a list at once, up to its first delay.
    void play(std::vector<ButtonIntent> intents) {
        executor->execute(std::move(intents));
        dispatcher.runReady();
    }

    std::optional<MacroExecutor> owned{std::in_place, poster, sideEffects, dispatcher};
    MacroExecutor* const executor = &*owned;
};

TEST_F(MacroExecutorTest, nothing_is_posted_on_the_callers_thread) {
    executor->execute({down(4), up(4)});
    EXPECT_THAT(takePosted(), IsEmpty());
    executor->drain();
    EXPECT_THAT(takePosted(), ElementsAre("key(4 down mods=0)", "key(4 up mods=0)"));
    executor->execute({});
    EXPECT_EQ(dispatcher.pendingCount(), 0U);
}

TEST_F(MacroExecutorTest, every_intent_reaches_its_sink_and_is_counted) {
    play({down(4, ModifierFlags::shift), up(4, ModifierFlags::shift), MouseButtonDownIntent{2},
          MouseButtonUpIntent{2}, PassThroughButtonIntent{5, true},
          PassThroughButtonIntent{5, false}, SetDPIIntent{800}, LaunchAppIntent{"org.example.app"},
          RunShortcutIntent{"Lights"}, StopRepeatIntent{9}});
    EXPECT_THAT(takePosted(),
                ElementsAre("key(4 down mods=2)", "key(4 up mods=2)", "mouseButton(2 down)",
                            "mouseButton(2 up)", "mouseButton(5 down)", "mouseButton(5 up)"));
    EXPECT_THAT(sideEffects->effects(),
                ElementsAre(SideEffect(DPIRequest{800}), SideEffect(AppLaunch{"org.example.app"}),
                            SideEffect(ShortcutRun{"Lights"})));
    EXPECT_EQ(
        executor->snapshotMetrics(),
        (MacroExecutor::Metrics{
            .intentsExecuted = 10, .keysPosted = 2, .mouseButtonsPosted = 4, .dpiRequests = 1}));
    executor->resetMetrics();
    EXPECT_EQ(executor->snapshotMetrics(), MacroExecutor::Metrics{});
}

TEST_F(MacroExecutorTest, a_delay_leaves_the_queue_to_others) {
    play({down(1), DelayIntent{10}, up(1)});
    play({down(2), up(2)});
    EXPECT_THAT(takePosted(),
                ElementsAre("key(1 down mods=0)", "key(2 down mods=0)", "key(2 up mods=0)"));
    dispatcher.advance(10ms - 1ns);
    EXPECT_THAT(takePosted(), IsEmpty());
    dispatcher.advance(1ns);
    EXPECT_THAT(takePosted(), ElementsAre("key(1 up mods=0)"));
}

TEST_F(MacroExecutorTest, a_delay_without_length_is_a_hop_and_a_trailing_one_is_nothing) {
    executor->execute({down(1), DelayIntent{-5}, up(1), DelayIntent{50}});
    executor->execute({down(2), up(2), DelayIntent{5000}});
    dispatcher.runReady();
    EXPECT_THAT(takePosted(), ElementsAre("key(1 down mods=0)", "key(2 down mods=0)",
                                          "key(2 up mods=0)", "key(1 up mods=0)"));
    EXPECT_EQ(dispatcher.pendingCount(), 0U);
    EXPECT_EQ(executor->snapshotMetrics().intentsExecuted, 4) << "delays are not counted";
}

TEST_F(MacroExecutorTest, a_key_pressed_twice_is_held_once_with_the_newer_modifiers) {
    play({down(4), down(5), down(4, ModifierFlags::shift), up(77)});
    EXPECT_THAT(takePosted(), ElementsAre("key(4 down mods=0)", "key(5 down mods=0)",
                                          "key(4 down mods=2)", "key(77 up mods=0)"));
    EXPECT_EQ(executor->heldKeyCount(), 2);
    executor->reset({});
    dispatcher.runReady();
    EXPECT_THAT(takePosted(), ElementsAre("key(4 up mods=2)", "key(5 up mods=0)"));
    EXPECT_EQ(executor->heldKeyCount(), 0);
}

TEST_F(MacroExecutorTest, a_reset_releases_keys_then_buttons_newest_first) {
    play({MouseButtonDownIntent{0}, down(1), PassThroughButtonIntent{6, true}, down(2)});
    takePosted();
    executor->reset({});
    dispatcher.runReady();
    EXPECT_THAT(takePosted(), ElementsAre("key(2 up mods=0)", "key(1 up mods=0)",
                                          "mouseButton(6 up)", "mouseButton(0 up)"));
    EXPECT_EQ(executor->heldMouseButtonCount(), 0);
    const MacroExecutor::Metrics metrics = executor->snapshotMetrics();
    EXPECT_EQ(metrics.resets, 1);
    EXPECT_EQ(metrics.keysForceReleased, 2);
    EXPECT_EQ(metrics.mouseButtonsForceReleased, 2);
    EXPECT_EQ(metrics.keysPosted, 2) << "releases of its own are not intents";
}

TEST_F(MacroExecutorTest, what_the_resets_list_releases_is_left_to_it) {
    play({down(1), down(2), MouseButtonDownIntent{0}, MouseButtonDownIntent{1},
          MouseButtonDownIntent{2}});
    takePosted();
    executor->reset({up(1), PassThroughButtonIntent{0, false}, PassThroughButtonIntent{1, true},
                     MouseButtonUpIntent{2}});
    EXPECT_EQ(executor->heldKeyCount(), 1);
    EXPECT_EQ(executor->heldMouseButtonCount(), 2);
    dispatcher.runReady();
    EXPECT_THAT(takePosted(),
                ElementsAre("key(2 up mods=0)", "mouseButton(1 up)", "key(1 up mods=0)",
                            "mouseButton(0 up)", "mouseButton(1 down)", "mouseButton(2 up)"));
    EXPECT_EQ(executor->heldKeyCount(), 0);
    EXPECT_EQ(executor->heldMouseButtonCount(), 1) << "the one that the list pressed again";
    EXPECT_EQ(executor->snapshotMetrics().keysForceReleased, 1);
    EXPECT_EQ(executor->snapshotMetrics().mouseButtonsForceReleased, 1);
}

TEST_F(MacroExecutorTest, a_list_decided_on_before_a_reset_is_not_played_after_it) {
    const std::uint64_t before = executor->epoch();
    executor->reset({});
    executor->execute({down(1)}, before);
    dispatcher.runReady();
    EXPECT_THAT(takePosted(), IsEmpty());
    EXPECT_EQ(executor->heldKeyCount(), 0);
    EXPECT_EQ(executor->snapshotMetrics().intentsAbandoned, 1);
}

TEST_F(MacroExecutorTest, what_a_reset_owes_to_others_outlives_the_next_reset) {
    const PassThroughButtonIntent passedUp{.number = 5, .isDown = false};
    executor->reset({up(1), passedUp, SetDPIIntent{2000}});
    executor->reset({SetDPIIntent{1200}});
    executor->reset({});
    dispatcher.runReady();
    EXPECT_THAT(takePosted(), ElementsAre("mouseButton(5 up)"));
    EXPECT_THAT(sideEffects->effects(),
                ElementsAre(SideEffect(DPIRequest{2000}), SideEffect(DPIRequest{1200})));
    sideEffects->reset();
    executor->reset({});
    dispatcher.runReady();
    EXPECT_THAT(takePosted(), IsEmpty());
    EXPECT_THAT(sideEffects->effects(), IsEmpty()) << "paid is paid";
}

TEST_F(MacroExecutorTest, a_repeat_plays_at_multiples_of_its_interval_until_it_is_stopped) {
    play({repeatOf(KeyStep{.code = 1}, 10)});
    EXPECT_EQ(executor->activeRepeatCount(), 1);
    dispatcher.advance(10ms - 1ns);
    EXPECT_THAT(takePosted(), IsEmpty()) << "the press has played the step already";
    dispatcher.advance(1ns);
    EXPECT_THAT(takePosted(), ElementsAre("key(1 down mods=0)", "key(1 up mods=0)"));
    dispatcher.advance(30ms);
    EXPECT_EQ(takePosted().size(), 6U);

    play({StopRepeatIntent{4}});
    dispatcher.advance(100ms);
    EXPECT_THAT(takePosted(), IsEmpty());
    const MacroExecutor::Metrics metrics = executor->snapshotMetrics();
    EXPECT_EQ(metrics.repeatsStarted, 1);
    EXPECT_EQ(metrics.repeatIterations, 4);
    EXPECT_EQ(metrics.repeatsStopped, 1);
    EXPECT_EQ(executor->activeRepeatCount(), 0);
}

TEST_F(MacroExecutorTest, the_shortest_interval_is_a_millisecond_and_the_longest_is_no_fault) {
    play({repeatOf(KeyStep{.code = 1}, 0.5), repeatOf(KeyStep{.code = 2}, 1e300, 5)});
    dispatcher.advance(3ms);
    EXPECT_EQ(executor->snapshotMetrics().repeatIterations, 3);
    executor->stopAllRepeats();
}

TEST_F(MacroExecutorTest, a_second_repeat_of_one_id_takes_the_place_of_the_first) {
    play({repeatOf(KeyDownStep{.code = 1}, 10), repeatOf(KeyDownStep{.code = 2}, 10)});
    dispatcher.advance(20ms);
    EXPECT_THAT(takePosted(), ElementsAre("key(2 down mods=0)", "key(2 down mods=0)"));
    EXPECT_EQ(executor->activeRepeatCount(), 1);
    EXPECT_EQ(executor->snapshotMetrics().repeatsStarted, 2);
    EXPECT_EQ(executor->snapshotMetrics().repeatsStopped, 0);

    executor->stopAllRepeats();
    EXPECT_EQ(executor->snapshotMetrics().repeatsStopped, 1);
    EXPECT_EQ(executor->heldKeyCount(), 1) << "what is held stays held";
}

TEST_F(MacroExecutorTest, a_reset_ends_the_repeats_of_its_epoch_and_starts_those_of_its_list) {
    play({repeatOf(KeyDownStep{.code = 1}, 10, 4), repeatOf(KeyDownStep{.code = 2}, 10, 5)});
    executor->execute({repeatOf(KeyDownStep{.code = 3}, 10, 6)});  // fenced: the reset comes first
    executor->reset({repeatOf(KeyDownStep{.code = 7}, 10, 7)});
    EXPECT_EQ(executor->snapshotMetrics().repeatsStopped, 2);
    dispatcher.advance(10ms);
    EXPECT_THAT(takePosted(), ElementsAre("key(7 down mods=0)"));
    EXPECT_EQ(executor->activeRepeatCount(), 1);
    executor->reset({});
    dispatcher.runReady();
}

TEST_F(MacroExecutorTest, an_executor_that_is_gone_still_releases_what_a_reset_promised) {
    play({down(1), DelayIntent{10}, up(1), down(2)});
    play({repeatOf(KeyDownStep{.code = 3}, 5)});
    takePosted();
    executor->reset({up(9)});
    owned.reset();
    dispatcher.advance(50ms);
    EXPECT_THAT(takePosted(), ElementsAre("key(1 up mods=0)"));
    dispatcher.discard();
}

}  // namespace
}  // namespace tessara
