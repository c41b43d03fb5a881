#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "TessaraCore/Checked.h"
#include "TessaraCore/Clamp.h"

namespace tessara {
namespace {

constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();

TEST(Checked, results_that_fit_are_exact_up_to_the_limits) {
    EXPECT_EQ(checkedAdd(greatest - 1, std::int64_t{1}), greatest);
    EXPECT_EQ(checkedSubtract(least + 1, std::int64_t{1}), least);
    EXPECT_EQ(checkedMultiply(std::int64_t{1} << 31, std::int64_t{-1} << 32), least);
    EXPECT_EQ(checkedAbs(least + 1), greatest);
    EXPECT_EQ(checkedInt64(-1.9), -1);
    EXPECT_EQ(checkedInt64(-0x1p63), least);
    EXPECT_EQ(checkedInt64(std::nextafter(0x1p63, 0)), greatest - 1023);
    EXPECT_EQ(checkedCast<std::uint8_t>(255), 255);
}

TEST(CheckedDeathTest, what_does_not_fit_stops_the_process_and_says_why) {
    EXPECT_DEATH(static_cast<void>(checkedAdd(greatest, std::int64_t{1})), "overflow in an add");
    EXPECT_DEATH(static_cast<void>(checkedSubtract(least, std::int64_t{1})), "in a subtraction");
    EXPECT_DEATH(static_cast<void>(checkedMultiply(greatest, std::int64_t{2})), "multiplication");
    EXPECT_DEATH(static_cast<void>(checkedAbs(least)), "overflow");
    for (const double value : {0x1p63, -0x1p64, std::nan(""), HUGE_VAL}) {
        EXPECT_DEATH(static_cast<void>(checkedInt64(value)), "not finite or too large");
    }
    EXPECT_DEATH(static_cast<void>(checkedCast<std::uint8_t>(256)), "does not fit");
    EXPECT_DEATH(static_cast<void>(checkedCast<std::uint64_t>(-1)), "does not fit");
}

TEST(Clamp, the_upper_bound_wins_when_the_bounds_are_crossed) {
    EXPECT_EQ(clamp(5, 1, 3), 3);
    EXPECT_EQ(clamp(0, 1, 3), 1);
    EXPECT_EQ(clamp(2, 1, 3), 2);
    EXPECT_EQ(clamp(5, 4, 2), 2);
    EXPECT_EQ(clamp(0, 4, 2), 2);
}

}  // namespace
}  // namespace tessara
