#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "TessaraReplay/FrameAssembler.h"
#include "TessaraReplay/Recording.h"

namespace tessara {
namespace {

using std::chrono::microseconds;

/// What the clock of the recording shows `micros` after its first event.
constexpr microseconds recorded(std::int64_t micros) {
    return microseconds(5'000'000 + micros);
}

constexpr RecordedEvent frameEnd(std::int64_t micros) {
    return {.time = recorded(micros)};
}

ReplayInputs assemble(std::vector<RecordedEvent> events) {
    return assembleInputs({.name = "r", .events = std::move(events)});
}

TimePoint after(std::int64_t micros) {
    return replayStart + microseconds(micros);
}

TEST(FrameAssembler, gathers_a_frame_s_movement_at_the_place_of_its_first_event) {
    constexpr std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    const auto result = assemble({frameEnd(0),
                                  {recorded(1), 2, 8, -2},
                                  {recorded(1), 2, 1, huge},
                                  {recorded(2), 1, 0x110, 1},
                                  {recorded(2), 1, 0x11f, 0},
                                  {recorded(3), 0, 3, 0},
                                  {recorded(4), 2, 0, 4},
                                  {recorded(5), 2, 1, huge},
                                  {recorded(6), 2, 6, 1},
                                  frameEnd(7),
                                  {recorded(8), 2, 0, -4},
                                  {recorded(9), 4, 4, 7}});
    const std::vector<ReplayInput> expected{
        {after(1), {}, WheelTurn{ScrollAxis::vertical, -2}},
        {after(1), {}, MouseMotion{4, 2 * std::int64_t{huge}}},
        {after(2), {}, ButtonChange{0, true}},
        {after(2), {}, ButtonChange{15, false}},
        {after(6), {}, WheelTurn{ScrollAxis::horizontal, 1}},
        {after(8), {}, MouseMotion{-4, 0}},
    };
    EXPECT_EQ(result.inputs, expected);
    EXPECT_EQ(result.end, after(9));
}

TEST(FrameAssembler, leaves_out_what_is_no_input) {
    const auto result = assemble({{microseconds(0), 2, 0x0b, 120},
                                  {microseconds(0), 2, 0x0c, 120},
                                  {microseconds(0), 2, 2, 1},
                                  {microseconds(0), 4, 4, 1},
                                  {microseconds(0), 1, 0x10f, 1},
                                  {microseconds(0), 1, 0x120, 1},
                                  {microseconds(0), 1, 0x110, 2},
                                  {microseconds(0), 1, 0x110, -1},
                                  {microseconds(0), 1, 30, 1},
                                  {microseconds(0), 3, 0, 1}});
    EXPECT_TRUE(result.inputs.empty());
}

TEST(FrameAssembler, holds_a_modifier_until_both_its_keys_are_up) {
    struct Case {
        std::uint16_t left;
        std::uint16_t right;
        ModifierFlags modifier;
    };
    for (const Case& c : std::vector<Case>{{0x2a, 0x36, ModifierFlags::shift},
                                           {0x1d, 0x61, ModifierFlags::control},
                                           {0x38, 0x64, ModifierFlags::option},
                                           {0x7d, 0x7e, ModifierFlags::command}}) {
        std::vector<RecordedEvent> events;
        const auto key = [&](std::uint16_t code, std::int32_t value) {
            events.push_back({microseconds(0), 1, code, value});
            events.push_back({microseconds(0), 2, 8, 1});
        };
        key(c.left, 1);
        key(c.left, 1);
        key(c.right, 1);
        key(c.left, 0);
        key(c.right, 2);
        key(c.right, 0);
        const std::vector<ModifierFlags> expected{c.modifier, c.modifier, c.modifier,
                                                  c.modifier, c.modifier, {}};
        std::vector<ModifierFlags> held;
        int keyChanges = 0;
        for (const ReplayInput& input : assemble(events).inputs) {
            if (std::holds_alternative<ModifierKeyChange>(input.what)) {
                ++keyChanges;
            } else {
                held.push_back(input.modifiers);
            }
        }
        EXPECT_EQ(held, expected);
        EXPECT_EQ(keyChanges, 4) << "each key down and up once, its repeat left out";
    }
}

}  // namespace
}  // namespace tessara
