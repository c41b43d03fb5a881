#include <cmath>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TessaraCore/ScrollTransformer.h"

namespace tessara {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

ScrollInput click(double atMillis, std::int64_t lines = 1, ModifierFlags modifiers = {}) {
    return {.lineDelta = lines, .modifiers = modifiers, .timestampMillis = atMillis};
}

/// The plan that `input` becomes; fails the test when it becomes none.
ScrollPlan planOf(ScrollTransformer& transformer, const ScrollInput& input,
                  std::optional<std::int64_t> delivered = std::nullopt) {
    const ScrollOutcome outcome = transformer.transform(input, delivered);
    const auto* animate = std::get_if<ScrollAnimate>(&outcome);
    if (animate == nullptr) {
        ADD_FAILURE() << "no plan for the input at " << input.timestampMillis;
        return {};
    }
    return animate->plan;
}

std::int64_t sumOf(const ScrollSteps& steps) {
    return std::accumulate(
        steps.begin(), steps.end(), std::int64_t{0},
        [](std::int64_t sum, const ScrollStep& step) { return sum + step.pixelDelta; });
}

TEST(ScrollTransformer, one_click_glides_fifty_pixels_along_the_curve) {
    ScrollTransformer transformer{ScrollSettings{}};
    const ScrollPlan plan = planOf(transformer, click(0));

    EXPECT_EQ(plan.id, 1U);
    EXPECT_EQ(plan.totalPixelDelta, 50);
    EXPECT_EQ(plan.gestureTransition, GestureTransition::begin);
    EXPECT_EQ(plan.supersedes, std::nullopt);
    EXPECT_EQ(plan.firstFrameOffsetMillis, 8);

    const std::vector<std::int64_t> deltas{5, 4, 4, 4, 3, 4, 3, 2, 3, 2, 2,
                                           2, 2, 2, 1, 1, 1, 1, 1, 1, 1, 1};
    std::vector<ScrollStep> expected;
    for (std::size_t i = 0; i < deltas.size(); ++i) {
        const double offset = i < 20 ? 8.0 * static_cast<double>(i + 1) : i == 20 ? 176 : 200;
        expected.push_back({.offsetMillis = offset,
                            .pixelDelta = deltas[i],
                            .phase = i == 0 ? ScrollPhase::began : ScrollPhase::changed});
    }
    expected.push_back({.offsetMillis = 250, .phase = ScrollPhase::ended});
    EXPECT_THAT(plan.steps, ElementsAreArray(expected));
}

TEST(ScrollTransformer, a_second_click_carries_the_pixels_not_yet_delivered) {
    ScrollTransformer transformer{ScrollSettings{}};
    const ScrollPlan first = planOf(transformer, click(0));
    EXPECT_EQ(ScrollTransformer::deliveredPixels(first, 100), 38);
    const ScrollPlan second = planOf(transformer, click(100));

    EXPECT_EQ(second.totalPixelDelta, 12 + 110);
    EXPECT_EQ(second.easingStartProgress, 0.4);
    EXPECT_EQ(second.firstFrameOffsetMillis, 4);
    EXPECT_EQ(second.gestureTransition, GestureTransition::continuePrevious);
    EXPECT_EQ(second.supersedes, 1U);
    ASSERT_GE(second.steps.size(), 3U);
    EXPECT_EQ(second.steps[0],
              (ScrollStep{.offsetMillis = 4, .pixelDelta = 6, .phase = ScrollPhase::changed}));
    EXPECT_EQ(second.steps[1], (ScrollStep{.offsetMillis = 12, .pixelDelta = 11}));
    EXPECT_EQ(second.steps[2], (ScrollStep{.offsetMillis = 20, .pixelDelta = 10}));
    EXPECT_EQ(sumOf(second.steps), 122);
}

TEST(ScrollTransformer, an_event_that_is_not_its_business_passes_and_changes_nothing) {
    struct Case {
        const char* name;
        ScrollSettings settings;
        ScrollInput input;
        bool passes;
    };
    const ModifierFlags commandAndLock{ModifierFlags::command, ModifierFlags::capsLock};
    const ModifierFlags shiftAndCommand{ModifierFlags::shift, ModifierFlags::command};
    const Case cases[] = {
        {"switched off", ScrollSettings::passThrough, click(1), true},
        {"another axis", {.enabledAxes = ScrollAxes::horizontal}, click(1), true},
        {"no axis", {.enabledAxes = ScrollAxes{}}, click(1), true},
        {"no lines", {}, click(1, 0), true},
        {"modifier lacking", {.activationModifiers = ModifierFlags::command}, click(1), true},
        {"one of two lacking",
         {.activationModifiers = shiftAndCommand},
         click(1, 1, ModifierFlags::shift),
         true},
        {"modifier held",
         {.activationModifiers = ModifierFlags::command},
         click(1, 1, commandAndLock),
         false},
        {"more held",
         {.activationModifiers = ModifierFlags::command},
         click(1, 1, shiftAndCommand),
         false},
        {"none needed", {.activationModifiers = ModifierFlags::none}, click(1), false},
        {"just caps lock", {.activationModifiers = ModifierFlags::capsLock}, click(1), false},
        {"nameless bits", {.activationModifiers = ModifierFlags{64U}}, click(1), false}};
    for (const auto& [name, settings, input, passes] : cases) {
        ScrollTransformer transformer{settings};
        const ScrollTransformer before = transformer;
        const ScrollOutcome outcome = transformer.transform(input);
        if (passes) {
            EXPECT_EQ(outcome, ScrollOutcome{ScrollPassThrough{input}}) << name;
            EXPECT_EQ(transformer, before) << name;
        } else {
            EXPECT_TRUE(std::holds_alternative<ScrollAnimate>(outcome)) << name;
        }
    }
}

TEST(ScrollTransformer, clicks_within_the_window_multiply_up_to_the_ceiling) {
    std::vector<std::int64_t> requested;
    ScrollTransformer unchained{{.durationMillis = 100}};
    for (int i = 0; i < 7; ++i) {
        requested.push_back(planOf(unchained, click(i * 140.0)).totalPixelDelta);
    }
    EXPECT_THAT(requested, ElementsAre(50, 110, 170, 230, 290, 300, 300));
}

TEST(ScrollTransformer, a_streak_lives_on_only_within_the_window_and_in_one_direction) {
    struct Case {
        const char* name;
        ScrollInput second;
        std::int64_t streak;
    };
    const Case cases[] = {
        {"at once", click(1000), 1},           {"just in the window", click(1140), 1},
        {"just past it", click(1140.5), 0},    {"back in time", click(999), 0},
        {"the other way", click(1010, -1), 0}, {"several lines are one click", click(1010, 9), 1}};
    for (const auto& [name, second, streak] : cases) {
        ScrollTransformer transformer{ScrollSettings{}};
        planOf(transformer, click(1000));
        planOf(transformer, second);
        EXPECT_EQ(transformer.axisState(ScrollAxis::vertical).streak, streak) << name;
    }
    ScrollTransformer switched{{.durationMillis = 10}};
    planOf(switched, click(1000));
    planOf(switched, click(1020));
    switched.setSettings({.durationMillis = 10, .accelerationEnabled = false});
    EXPECT_EQ(planOf(switched, click(1040)).totalPixelDelta, 50);
    switched.setSettings({.durationMillis = 10});
    EXPECT_EQ(planOf(switched, click(1060)).totalPixelDelta, 110) << "the streak began anew";
}

TEST(ScrollTransformer, the_relation_to_the_plan_before_decides_what_is_carried) {
    struct Case {
        const char* name;
        double atMillis;
        std::int64_t lines;
        ModifierFlags modifiers;
        std::optional<std::int64_t> delivered;
        // What is expected of the second plan, without acceleration:
        GestureTransition transition;
        bool supersedes;
        std::int64_t total;
        double startProgress;
        double firstOffset;
    };
    using enum GestureTransition;
    constexpr ModifierFlags none = ModifierFlags::none;
    constexpr ModifierFlags lock = ModifierFlags::capsLock;
    const Case cases[] = {
        {"finished long ago", 900, 1, none, {}, begin, false, 50, 0, 8},
        {"finished just now", 250, 1, none, {}, begin, false, 50, 0, 8},
        {"not quite finished", 249, 1, none, {}, continuePrevious, true, 50, 0.996, 7},
        {"same way, estimated", 100, 1, none, {}, continuePrevious, true, 62, 0.4, 4},
        {"same way, told", 100, 1, none, 20, continuePrevious, true, 80, 0.4, 4},
        {"on a frame of the grid", 96, 1, none, 0, begin, true, 100, 0.384, 8},
        {"on the first frame", 8, 1, none, 0, begin, true, 100, 0.032, 8},
        {"before the first frame", 3, 1, none, {}, begin, true, 100, 0.012, 5},
        {"at the same time", 0, 1, none, {}, begin, true, 100, 0, 8},
        {"the other way", 100, -1, none, {}, endPreviousThenBegin, true, -50, 0, 8},
        {"the other way, told of nothing", 100, -1, none, 0, begin, true, -50, 0, 8},
        {"other modifiers", 100, 1, lock, {}, endPreviousThenBegin, true, 50, 0, 8},
        {"other modifiers at once", 3, 1, lock, {}, begin, true, 50, 0, 8}};
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        ScrollTransformer transformer{{.accelerationEnabled = false}};
        planOf(transformer, click(0));
        const ScrollPlan plan =
            planOf(transformer, click(each.atMillis, each.lines, each.modifiers), each.delivered);
        EXPECT_EQ(plan.gestureTransition, each.transition);
        EXPECT_EQ(
            plan.steps.front() == (ScrollStep{.phase = ScrollPhase::ended, .modifiers = none}),
            each.transition == endPreviousThenBegin);
        EXPECT_EQ(plan.supersedes.has_value(), each.supersedes);
        EXPECT_EQ(plan.totalPixelDelta, each.total);
        EXPECT_DOUBLE_EQ(plan.easingStartProgress, each.startProgress);
        EXPECT_DOUBLE_EQ(plan.firstFrameOffsetMillis, each.firstOffset);
    }
}

TEST(ScrollTransformer, a_chain_goes_on_from_where_the_curve_really_stood) {
    ScrollTransformer transformer{ScrollSettings{}};
    planOf(transformer, click(0));
    EXPECT_DOUBLE_EQ(planOf(transformer, click(249.9)).easingStartProgress, 0.9996);
    // The limit of 0.999 is for the shape of one plan and is not handed on.
    EXPECT_DOUBLE_EQ(planOf(transformer, click(374.9)).easingStartProgress, 0.9998);
}

TEST(ScrollTransformer, a_gesture_taken_over_is_under_way_before_the_new_plan_has_moved) {
    for (const auto& [lines, transition] : {std::pair{1, GestureTransition::continuePrevious},
                                            {-1, GestureTransition::endPreviousThenBegin}}) {
        ScrollTransformer transformer{ScrollSettings{}};
        planOf(transformer, click(0));
        planOf(transformer, click(100));
        EXPECT_EQ(planOf(transformer, click(101, lines), 0).gestureTransition, transition);
    }
}

TEST(ScrollTransformer, a_click_at_the_very_end_of_a_glide_still_moves) {
    for (const Easing easing : allCases<Easing>) {
        ScrollTransformer transformer{{.easing = easing}};
        planOf(transformer, click(0));
        const ScrollPlan plan = planOf(transformer, click(std::nextafter(250.0, 0.0)));
        EXPECT_EQ(plan.totalPixelDelta, 50);
        EXPECT_EQ(sumOf(plan.steps), 50) << rawValue(easing);
        EXPECT_GT(plan.steps.size(), 10U) << rawValue(easing);
    }
}

TEST(ScrollTransformer, a_total_of_nothing_is_ignored_and_still_counts_as_a_click) {
    for (const ScrollSettings& settings :
         {ScrollSettings{.pixelsPerDetent = 0}, ScrollSettings{.maxInFlightPixels = 0}}) {
        ScrollTransformer transformer{settings};
        EXPECT_EQ(transformer.transform(click(10, -2)), ScrollOutcome{ScrollIgnore{}});
        EXPECT_EQ(transformer.transform(click(20, -2)), ScrollOutcome{ScrollIgnore{}});
        EXPECT_EQ(transformer.axisState(ScrollAxis::vertical),
                  (ScrollTransformer::AxisState{
                      .lastDetentMillis = 20, .lastDirection = -1, .streak = 1}));
        EXPECT_EQ(transformer.nextPlanID(), 1U);
    }
}

TEST(ScrollTransformer, an_ignored_click_leaves_the_running_plan_in_its_place) {
    ScrollTransformer transformer{ScrollSettings{}};
    const ScrollPlan running = planOf(transformer, click(0));
    transformer.setSettings({.pixelsPerDetent = 0});
    EXPECT_EQ(transformer.transform(click(100), 50), ScrollOutcome{ScrollIgnore{}});
    ASSERT_NE(transformer.inFlightPlan(ScrollAxis::vertical), nullptr);
    EXPECT_EQ(*transformer.inFlightPlan(ScrollAxis::vertical), running);
    // With pixels left to deliver the click makes a plan of them and of nothing else.
    EXPECT_EQ(planOf(transformer, click(110), 38).totalPixelDelta, 12);
}

TEST(ScrollTransformer, inversion_turns_the_output_and_nothing_else) {
    ScrollTransformer transformer{{.isInverted = true}};
    EXPECT_EQ(planOf(transformer, click(0)).totalPixelDelta, -50);
    EXPECT_EQ(transformer.axisState(ScrollAxis::vertical).lastDirection, 1);
    EXPECT_EQ(planOf(transformer, click(100)).gestureTransition,
              GestureTransition::continuePrevious);
}

TEST(ScrollTransformer, every_line_counts_and_halves_of_a_pixel_round_away_from_zero) {
    for (const auto& [lines, total] : {std::pair{1, 3}, {-1, -3}, {3, 8}, {-4, -10}}) {
        ScrollTransformer transformer{{.pixelsPerDetent = 2.5}};
        EXPECT_EQ(planOf(transformer, click(0, lines)).totalPixelDelta, total);
    }
}

TEST(ScrollTransformer, frames_stand_on_the_interval_and_the_last_on_the_end) {
    struct Case {
        double durationMillis;
        double frameIntervalMillis;
        std::vector<double> offsets;  // of the moving steps, all of which are large
    };
    const Case cases[] = {{10, 4, {4, 8, 10}}, {8, 4, {4, 8}},       {8, 8, {8}},
                          {8, 900, {8}},       {9, 8, {8, 9}},       {-5, 3, {1}},
                          {3, 1, {1, 2, 3}},   {2.5, 1, {1, 2, 2.5}}};
    for (const Case& each : cases) {
        ScrollTransformer transformer{{.durationMillis = each.durationMillis,
                                       .easing = Easing::linear,
                                       .pixelsPerDetent = 10'000,
                                       .frameIntervalMillis = each.frameIntervalMillis,
                                       .maxInFlightPixels = 1e6}};
        const ScrollPlan plan = planOf(transformer, click(0));
        std::vector<double> offsets;
        for (const ScrollStep& step : plan.steps)
            offsets.push_back(step.offsetMillis);
        std::vector<double> expected = each.offsets;
        expected.push_back(plan.durationMillis);  // the close
        EXPECT_EQ(offsets, expected) << each.durationMillis << '/' << each.frameIntervalMillis;
    }
}

TEST(ScrollTransformer, a_reset_forgets_the_axes_and_neither_settings_nor_ids) {
    ScrollTransformer transformer{{.pixelsPerDetent = 7}};
    planOf(transformer, click(0));
    transformer.reset();
    EXPECT_EQ(transformer.inFlightPlan(ScrollAxis::vertical), nullptr);
    const ScrollPlan plan = planOf(transformer, click(10));
    EXPECT_EQ(plan.id, 2U);
    EXPECT_EQ(plan.totalPixelDelta, 7);
    EXPECT_EQ(plan.supersedes, std::nullopt);
}

TEST(ScrollTransformer, axes_share_the_ids_and_nothing_else) {
    ScrollTransformer transformer{ScrollSettings{}};
    planOf(transformer, click(0));
    ScrollInput sideways = click(50, -1);
    sideways.axis = ScrollAxis::horizontal;
    sideways.deviceID = DeviceID{9};
    const ScrollPlan plan = planOf(transformer, sideways);
    EXPECT_EQ(plan.id, 2U);
    EXPECT_EQ(plan.axis, ScrollAxis::horizontal);
    EXPECT_EQ(plan.deviceID, DeviceID{9});
    EXPECT_EQ(plan.totalPixelDelta, -50);
    EXPECT_EQ(plan.supersedes, std::nullopt);
}

TEST(ScrollTransformer, a_step_counts_as_delivered_at_its_very_time) {
    const ScrollPlan plan{.startTimestampMillis = 1000,
                          .durationMillis = 20,
                          .totalPixelDelta = 7,
                          .steps = {{.offsetMillis = 8, .pixelDelta = 4},
                                    {.offsetMillis = 16, .pixelDelta = 3},
                                    {.offsetMillis = 20, .phase = ScrollPhase::ended}}};
    for (const auto& [time, pixels] :
         {std::pair{900.0, 0}, {1007.9, 0}, {1008.0, 4}, {5000.0, 7}}) {
        EXPECT_EQ(ScrollTransformer::deliveredPixels(plan, time), pixels) << time;
    }
}

TEST(ScrollStepsDeathTest, sequences_are_equal_by_their_steps_and_have_none_beyond_the_last) {
    EXPECT_NE((ScrollSteps{{.pixelDelta = 1}}), (ScrollSteps{{.pixelDelta = 2}}));
    EXPECT_DEATH(static_cast<void>(ScrollSteps{{.pixelDelta = 1}}[1]), "beyond the end");
}

/// What must be true of every plan, whatever came before it.
void expectWellFormed(const ScrollPlan& plan, const ScrollSettings& settings) {
    ASSERT_FALSE(plan.steps.empty());
    EXPECT_NE(plan.totalPixelDelta, 0);
    EXPECT_LE(std::abs(plan.totalPixelDelta), std::llround(settings.maxInFlightPixels));
    EXPECT_EQ(sumOf(plan.steps), plan.totalPixelDelta);
    EXPECT_EQ(plan.steps.back(),
              (ScrollStep{.offsetMillis = plan.durationMillis, .phase = ScrollPhase::ended}));
    EXPECT_GE(plan.firstFrameOffsetMillis, 0);
    EXPECT_LE(plan.firstFrameOffsetMillis, plan.frameIntervalMillis);

    std::vector<ScrollPhase> expected;
    if (plan.gestureTransition == GestureTransition::endPreviousThenBegin) {
        expected.push_back(ScrollPhase::ended);
    }
    if (plan.gestureTransition != GestureTransition::continuePrevious) {
        expected.push_back(ScrollPhase::began);
    }
    expected.resize(plan.steps.size() - 1, ScrollPhase::changed);
    expected.push_back(ScrollPhase::ended);
    std::vector<ScrollPhase> phases;
    double offset = 0;
    for (const ScrollStep& step : plan.steps) {
        EXPECT_GE(step.offsetMillis, offset);
        EXPECT_EQ(step.pixelDelta == 0, step.phase == ScrollPhase::ended);
        offset = step.offsetMillis;
        phases.push_back(step.phase);
    }
    EXPECT_EQ(phases, expected);
}

TEST(ScrollTransformer, random_hands_on_random_settings_get_well_formed_plans) {
    std::mt19937_64 random(20'260'101);
    const auto chance = [&](double lower, double upper) {
        return std::uniform_real_distribution(lower, upper)(random);
    };
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        const ScrollSettings settings{.durationMillis = chance(-10, 600),
                                      .easing = allCases<Easing>[random() % 3],
                                      .pixelsPerDetent = chance(-1, 200),
                                      .frameIntervalMillis = chance(0, 40),
                                      .maxInFlightPixels = chance(0, 5000),
                                      .isInverted = random() % 2 == 0,
                                      .accelerationEnabled = random() % 2 == 0,
                                      .accelerationGain = chance(0, 3)};
        ScrollTransformer transformer{settings};
        double time = 0;
        for (int i = 0; i < 40; ++i) {
            time += chance(-2, 150);
            const std::int64_t lines = static_cast<std::int64_t>(random() % 9) - 4;
            const auto modifiers = ModifierFlags(random() % 8 == 0 ? 2U : 0U);
            const ScrollOutcome outcome = transformer.transform(click(time, lines, modifiers));
            if (const auto* animate = std::get_if<ScrollAnimate>(&outcome)) {
                expectWellFormed(animate->plan, settings);
            }
        }
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace tessara
