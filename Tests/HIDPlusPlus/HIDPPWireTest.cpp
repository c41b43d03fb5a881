#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPWire.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

TEST(HIDPPWire, software_ids_rotate_through_1_to_15_and_never_give_0) {
    const struct {
        std::uint8_t last, next;
    } cases[] = {{0, 1}, {1, 2}, {7, 8}, {14, 15}, {15, 1}, {16, 1}, {31, 1}, {0x2E, 15}};
    for (const auto& [last, next] : cases) {
        EXPECT_EQ(HIDPPWire::softwareIDAfter(last), next) << "after " << int{last};
    }
}

TEST(HIDPPWire, the_function_byte_never_carries_software_id_0) {
    EXPECT_EQ(HIDPPWire::functionByte(3, 0), 0x38);
    EXPECT_EQ(HIDPPWire::functionByte(3, 0x10), 0x38);
    EXPECT_EQ(HIDPPWire::functionByte(3, 0x12), 0x32);
    EXPECT_EQ(HIDPPWire::functionByte(15, 15), 0xFF);
    EXPECT_EQ(HIDPPWire::functionByte(0x1F, 1), 0xF1);
}

TEST(HIDPPWire, a_request_is_sent_at_its_full_length_and_filled_with_zeros) {
    EXPECT_THAT(*HIDPPWire::encodeRequest(0xFF, 0, 1, Bytes{0, 0, 0x5A}, false, 1),
                ElementsAre(0x10, 0xFF, 0x00, 0x11, 0x00, 0x00, 0x5A));
    EXPECT_THAT(*HIDPPWire::encodeRequest(0x01, 0x0C, 2, {}, false, 0x0F),
                ElementsAre(0x10, 0x01, 0x0C, 0x2F, 0, 0, 0));
    Bytes expected(20, 0);
    expected[0] = 0x11, expected[1] = 0xFF, expected[2] = 7, expected[3] = 0x32, expected[4] = 9;
    EXPECT_EQ(*HIDPPWire::encodeRequest(0xFF, 7, 3, Bytes{9}, true, 2), expected);
}

TEST(HIDPPWire, parameters_must_fit_in_the_report) {
    const auto encode = [](std::size_t count, bool isLong) {
        return HIDPPWire::encodeRequest(0xFF, 1, 2, Bytes(count, 0xAB), isLong, 1);
    };
    EXPECT_EQ(encode(3, false)->back(), 0xAB);
    EXPECT_EQ(encode(16, true)->back(), 0xAB);
    EXPECT_EQ(encode(4, false).error().description(),
              "invalid argument: 4 parameter bytes do not fit in a short report");
    EXPECT_EQ(encode(17, true).error().description(),
              "invalid argument: 17 parameter bytes do not fit in a long report");
}

}  // namespace
}  // namespace tessara
