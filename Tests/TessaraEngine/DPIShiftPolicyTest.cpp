#include <gtest/gtest.h>

#include "TessaraEngine/DPIShiftPolicy.h"

namespace tessara {
namespace {

TEST(DPIShiftPolicy, a_request_for_the_baseline_is_no_shift) {
    EXPECT_EQ(DPIShiftPolicy::override(800, 2000), 800);
    EXPECT_EQ(DPIShiftPolicy::override(2000, 2000), std::nullopt);
    EXPECT_EQ(DPIShiftPolicy::override(0, 2000), 0);
}

}  // namespace
}  // namespace tessara
