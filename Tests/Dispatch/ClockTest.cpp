#include <cmath>

#include <gtest/gtest.h>

#include "Platform/Dispatch/Clock.h"

namespace tessara {
namespace {

using std::chrono::nanoseconds;

TEST(Clock, milliseconds_become_whole_nanoseconds_truncated_toward_zero) {
    struct Case {
        double millis;
        std::int64_t nanos;
    };
    const Case cases[] = {
        {0, 0},           {8, 8'000'000}, {-8, -8'000'000},   {0.0000019, 1},
        {-0.0000019, -1}, {0.0000009, 0}, {16.5, 16'500'000}, {9.2e12, 9'200'000'000'000'000'000},
    };
    for (const auto& [millis, nanos] : cases) {
        EXPECT_EQ(nanosecondsFromMillis(millis), nanoseconds(nanos)) << millis;
    }
}

TEST(ClockDeathTest, a_duration_that_is_no_number_of_nanoseconds_stops_the_process) {
    const double largest = 0x1p63 / 1e6;
    EXPECT_EQ(nanosecondsFromMillis(-largest), nanoseconds::min());
    EXPECT_DEATH((void)nanosecondsFromMillis(largest), "does not fit");
    EXPECT_DEATH((void)nanosecondsFromMillis(std::nextafter(-largest, -HUGE_VAL)), "does not fit");
    EXPECT_DEATH((void)nanosecondsFromMillis(std::nan("")), "not finite");
    EXPECT_DEATH((void)nanosecondsFromMillis(HUGE_VAL), "not finite");
}

TEST(Clock, a_moment_is_told_in_milliseconds_with_its_fraction) {
    EXPECT_DOUBLE_EQ(millisSinceStart(TimePoint(nanoseconds(1'500'250))), 1.50025);
}

}  // namespace
}  // namespace tessara
