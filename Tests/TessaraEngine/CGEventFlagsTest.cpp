#include <gtest/gtest.h>

#include "TessaraEngine/CGEventFlags.h"

namespace tessara {
namespace {

TEST(CGEventFlags, each_modifier_is_one_bit_of_the_events_flags_and_back) {
    const struct {
        ModifierFlags modifier;
        std::uint64_t flag;
    } rows[] = {
        {ModifierFlags::none, 0},
        {ModifierFlags::capsLock, 0x10000},
        {ModifierFlags::shift, 0x20000},
        {ModifierFlags::control, 0x40000},
        {ModifierFlags::option, 0x80000},
        {ModifierFlags::command, 0x100000},
        {ModifierFlags::function, 0x800000},
        {ModifierFlags(63), 0x9F0000},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(cgEventFlags(row.modifier), row.flag);
        EXPECT_EQ(modifierFlags(row.flag), row.modifier);
    }
}

TEST(CGEventFlags, bits_without_a_counterpart_are_dropped_both_ways) {
    EXPECT_EQ(modifierFlags(0x200000), ModifierFlags::none) << "the numeric pad";
    EXPECT_EQ(modifierFlags(~std::uint64_t{0x9F0000}), ModifierFlags::none);
    EXPECT_EQ(modifierFlags(0x40000 | 0x2000 | 0x100), ModifierFlags::control);
    EXPECT_EQ(cgEventFlags(ModifierFlags(0xFFFFFFC0U)), 0U);
}

}  // namespace
}  // namespace tessara
